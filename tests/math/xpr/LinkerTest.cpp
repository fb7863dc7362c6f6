#include <velmora/math/xpr/Linker.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <velmora/MemAccounts.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/src/UnknownVariable.h"
#include "support/AssertionCapture.h"
#include "support/GraphInvariants.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {

namespace {

using Testing::checkInvariants;
using Testing::checkLinked;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::LinkBench;
using Testing::scriptsIn;

constexpr const char* LoggerName = "quillmark.math.xpr.Linker";

/// A loader that finds nothing and says what was done with it.
class LoaderStub : public ScriptLoader {
public:
    struct Record {
        int m_iClones = 0;
        int m_iConfigured = 0;
        std::vector<std::string> m_vAsked;
    };

    explicit LoaderStub(std::shared_ptr<Record> in_pRecord) : m_pRecord(std::move(in_pRecord)) {}

    Cloneable* clone() const override {
        ++m_pRecord->m_iClones;
        return new LoaderStub(m_pRecord);
    }
    bool configure(const ROConfiguration&) override {
        ++m_pRecord->m_iConfigured;
        return true;
    }
    bool run(std::istream&, const char*, Dictionnary&) override { return false; }
    bool run(const char* in_szScriptName, Dictionnary&, bool in_bReportOpenFailure) override {
        m_pRecord->m_vAsked.push_back(in_szScriptName +
                                      std::string(in_bReportOpenFailure ? "!" : ""));
        return false;
    }

private:
    std::shared_ptr<Record> m_pRecord;
};

/// A loader whose clone is none.
class ClonelessLoader : public LoaderStub {
public:
    explicit ClonelessLoader(bool in_bNull)
        : LoaderStub(std::make_shared<Record>()), m_bNull(in_bNull) {}
    Cloneable* clone() const override { return m_bNull ? nullptr : new Linker; }

private:
    bool m_bNull;
};

class LinkerTest : public ::testing::Test {
protected:
    AssertionCapture m_Assertions;
    LogCapture m_Log;
};

VariableImpl* variable(const char* in_szName, const Handle<Expression>& in_pValue) {
    auto* const pVariable = new VariableImpl;
    pVariable->setName(in_szName);
    pVariable->setValue(in_pValue);
    return pVariable;
}

Handle<Expression> constant(double in_dValue) {
    return Handle<Expression>(new ConstantImpl(DoubleVector{in_dValue}));
}

Handle<Expression> reference(const char* in_szName) {
    auto* const pUnknown = new UnknownVariable;
    pUnknown->setName(in_szName);
    return Handle<Expression>(pUnknown);
}

TEST_F(LinkerTest, RunBeforeConfigureIsAnAssertion) {
    Linker linker;
    const Dictionnary raw("raw");
    Dictionnary linked("linked");
    EXPECT_FALSE(linker.run(raw, linked));
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("!m_pScriptLoader.isNull() && \"please call configure() prior to call "
                            "run\""));
}

TEST_F(LinkerTest, OutputThatIsNotEmptyIsAnAssertion) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1"));
    bench.m_Linked.add(Handle<Expression>(variable("other", constant(1))), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("out_LinkedExpressions.size() == 0 && \"linked expression dictionnary "
                            "is not empty\""));
    EXPECT_EQ(bench.m_Linked.size(), 1u);
}

TEST_F(LinkerTest, NothingToLinkGivesAnEmptyOutput) {
    LinkBench bench;
    EXPECT_TRUE(bench.link());
    EXPECT_EQ(bench.m_Linked.size(), 0u);
    EXPECT_EQ(m_Log.count(log4cplus::ERROR_LOG_LEVEL), 0u);
}

TEST_F(LinkerTest, ConfigureKeepsAGivenLoaderAsItIs) {
    const auto pRecord = std::make_shared<LoaderStub::Record>();
    Linker linker;
    m_Log.clear();
    EXPECT_TRUE(linker.configure(ParameterTrie(), Handle<ScriptLoader>(new LoaderStub(pRecord))));
    EXPECT_EQ(pRecord->m_iConfigured, 0);
    EXPECT_THAT(m_Log.messages(log4cplus::DEBUG_LOG_LEVEL),
                ElementsAre("configuring the script loader..."));
    EXPECT_EQ(m_Log.lines().at(0).logger, LoggerName);
}

TEST_F(LinkerTest, ConfigureWithoutALoaderReadsTheMachinesFiles) {
    const TempDirectory directory;
    directory.write("other.xpr", "level = 3\n");
    Linker linker;
    ASSERT_TRUE(linker.configure(scriptsIn(directory.path().c_str()), Handle<ScriptLoader>()));
    Dictionnary raw("raw");
    raw.add(Handle<Expression>(variable("s.a", reference("s.other.level"))), false);
    Dictionnary linked("linked");
    EXPECT_TRUE(linker.run(raw, linked));
    DoubleVector vValue;
    ASSERT_TRUE(linked.findExpression("s.a")->evaluate(vValue));
    ASSERT_EQ(vValue.size(), 1u);
    EXPECT_EQ(vValue[0], 3.0);
}

TEST_F(LinkerTest, ALoaderOfItsOwnThatCanNotBeConfiguredIsReported) {
    Linker linker;
    EXPECT_FALSE(linker.configure(ParameterTrie(), Handle<ScriptLoader>()));
    EXPECT_THAT(m_Log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre(HasSubstr("failed to configure. Can't find parameter: "),
                            "failed to configure the script loader"));
}

TEST_F(LinkerTest, ACopyHasALoaderOfItsOwn) {
    const auto pRecord = std::make_shared<LoaderStub::Record>();
    Linker linker;
    linker.configure(ParameterTrie(), Handle<ScriptLoader>(new LoaderStub(pRecord)));
    const Handle<Cloneable> pClone(linker.clone());
    EXPECT_FALSE(Handle<Linker>(pClone).isNull());
    EXPECT_EQ(pRecord->m_iClones, 1);
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(LinkerTest, ACopyOfAnUnconfiguredLinkerIsUnconfigured) {
    const Linker linker;
    Linker copy(linker);
    const Dictionnary raw("raw");
    Dictionnary linked("linked");
    EXPECT_FALSE(copy.run(raw, linked));
    EXPECT_EQ(m_Assertions.count(), 1u);
}

TEST_F(LinkerTest, AnAssignedLinkerSharesTheLoader) {
    const auto pRecord = std::make_shared<LoaderStub::Record>();
    const Handle<ScriptLoader> pLoader(new LoaderStub(pRecord));
    Linker linker;
    linker.configure(ParameterTrie(), pLoader);
    Linker other;
    other = linker;
    EXPECT_EQ(pRecord->m_iClones, 0);
    EXPECT_EQ(pLoader.getReferenceCount(), 3);
}

TEST_F(LinkerTest, CopyingIsTraced) {
    const LogCapture trace(LoggerName, log4cplus::TRACE_LOG_LEVEL);
    const Linker linker;
    const Linker copy(linker);
    ASSERT_EQ(trace.count(log4cplus::TRACE_LOG_LEVEL), 2u);
    EXPECT_EQ(trace.count(log4cplus::TRACE_LOG_LEVEL, "Linker::Linker copy"), 2u);
}

TEST_F(LinkerTest, ALoaderWithoutACloneIsAnAssertion) {
    Linker linker;
    linker.configure(ParameterTrie(), Handle<ScriptLoader>(new ClonelessLoader(true)));
    const Linker copy(linker);
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("pClone", "!m_pScriptLoader.isNull()"));
}

TEST_F(LinkerTest, ACloneThatIsNoLoaderIsAnAssertion) {
    Linker linker;
    linker.configure(ParameterTrie(), Handle<ScriptLoader>(new ClonelessLoader(false)));
    const Linker copy(linker);
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("!m_pScriptLoader.isNull()"));
}

TEST_F(LinkerTest, LinkersAreCountedUnderTheirAccount) {
    EXPECT_STREQ(Linker::getMemAccountName(), "Linker");
}

TEST_F(LinkerTest, TheOutputHasTheEntriesOfTheInputInTheirOrder) {
    LinkBench bench{{"scripts/other.xpr", "level = 2\nhelper = 3\n"}};
    ASSERT_TRUE(bench.load("s", "c = other.level\nf(x, y) = x + y\nb = f(c, c)\na = f(b, c)\n"));
    ASSERT_TRUE(bench.link());
    std::vector<std::string> vNames;
    for (auto ite = bench.m_Linked.begin(); ite != bench.m_Linked.end(); ++ite) {
        vNames.push_back(ite->first);
    }
    EXPECT_THAT(vNames, ElementsAre("s.c", "s.f", "s.b", "s.a"));
    EXPECT_EQ(bench.value("s.a"), "[6]");
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
    EXPECT_TRUE(checkLinked(bench.m_Linked));
    EXPECT_TRUE(bench.m_Linked.findExpression("other.level").isNull());
    EXPECT_TRUE(bench.m_Raw.findExpression("other.level").isNull());
}

TEST_F(LinkerTest, VariablesAreLinkedInPlaceAndFunctionsAsCopies) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "inputvar in\nv = in\nf(x, y) = x + y\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.m_Linked.findExpression("s.in"), bench.m_Raw.findExpression("s.in"));
    EXPECT_EQ(bench.m_Linked.findExpression("s.v"), bench.m_Raw.findExpression("s.v"));
    EXPECT_NE(bench.m_Linked.findExpression("s.f"), bench.m_Raw.findExpression("s.f"));
}

TEST_F(LinkerTest, ARawFunctionKeepsItsPlaceholders) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1\nf(x, y) = a\n"));
    ASSERT_TRUE(bench.link());
    const Handle<ScriptFunctionImpl> pRaw(bench.m_Raw.findExpression("s.f"));
    EXPECT_FALSE(Handle<UnknownVariable>(pRaw->getImplementation()).isNull());
    const Handle<ScriptFunctionImpl> pLinked(bench.linked<ScriptFunctionImpl>("s.f"));
    EXPECT_EQ(Handle<Expression>(pLinked->getImplementation()),
              bench.m_Linked.findExpression("s.a"));
}

TEST_F(LinkerTest, BothBadNamesAreReported) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = nope\nb = 1\nc = 2 + neither(b)\n"));
    m_Log.clear();
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("<file_position fileName=\"s\" line=\"1\" column=\"5\"/>:"
                            "can't resolve expression: s.nope",
                            "<file_position fileName=\"s\" line=\"3\" column=\"9\"/>:"
                            "can't resolve expression: s.neither"));
}

TEST_F(LinkerTest, AFailedRunHoldsTheEntriesThatLinked) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = nope\nb = 1\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_EQ(bench.m_Linked.size(), 1u);
    EXPECT_EQ(bench.value("s.b"), "[1]");
}

TEST_F(LinkerTest, AfterAFailureVariablesKeepWhatWasResolvedInThem) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1\nb = a + nope\n"));
    EXPECT_FALSE(bench.link());
    const Handle<VariableImpl> pB(bench.m_Raw.findExpression("s.b"));
    const Handle<BinaryOperatorImplNoT> pSum(pB->getValue());
    EXPECT_EQ(Handle<Expression>(Handle<VariableImpl>(pSum->getLeftArgument())->getValue()),
              bench.m_Raw.findExpression("s.a"));
    EXPECT_FALSE(Handle<UnknownVariable>(Handle<VariableImpl>(pSum->getRightArgument())->getValue())
                     .isNull());
}

TEST_F(LinkerTest, ASecondRunAfterAFailureLinksWhatHasBecomeKnown) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1\nb = a + t.c\n"));
    EXPECT_FALSE(bench.link());
    bench.files().setFile("scripts/t.xpr", "c = 4\n");
    bench.m_Linked.clear();
    EXPECT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.b"), "[5]");
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
    EXPECT_TRUE(checkLinked(bench.m_Linked));
}

TEST_F(LinkerTest, TwoEntriesOfOneNameEndTheRun) {
    LinkBench bench;
    const Handle<VariableImpl> pSecond(variable("b", constant(2)));
    bench.m_Raw.add(Handle<Expression>(variable("a", constant(1))), false);
    bench.m_Raw.add(Handle<Expression>(pSecond), false);
    bench.m_Raw.add(Handle<Expression>(variable("c", constant(3))), false);
    pSecond->setName("a");
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("out_LinkedExpressions.add( pExpr )"));
    EXPECT_EQ(bench.m_Linked.size(), 1u);
}

TEST_F(LinkerTest, ConstantsCanBeEntries) {
    LinkBench bench;
    bench.m_Raw.add(constant(7), false);
    EXPECT_TRUE(bench.link());
    EXPECT_EQ(bench.value("Constant_[7]"), "[7]");
    EXPECT_NE(bench.m_Linked.begin()->second, bench.m_Raw.begin()->second);
}

/// A function of a host that isn't built on the library's nodes.
class ForeignFunction : public virtual Function {
public:
    const char* getName() const override { return "foreign"; }
    Handle<Variable> getArgument(std::size_t) const override { return {}; }
    Handle<Variable> getArgument(const char*) const override { return {}; }
    Handle<Parameter> getParameter(std::size_t) const override { return {}; }
    Handle<Parameter> getParameter(const char*) const override { return {}; }
    bool configure(const TSHandle<VirtualFileSystem>&) override { return true; }
    bool evaluate(DoubleVector&) override { return false; }
    bool evaluate(LimitedObjPtr<DoubleVector>&) override { return false; }
    bool dump(const char*) const override { return true; }
    bool reset() override { return true; }
    std::ostream& write(std::ostream& out_Stream) const override { return out_Stream; }
};

TEST_F(LinkerTest, AnEntryThatIsNoNodeFailsAndTheOthersLink) {
    LinkBench bench;
    bench.m_Raw.add(Handle<Expression>(new ForeignFunction), false);
    bench.m_Raw.add(Handle<Expression>(variable("a", constant(1))), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("Must use same implementation base for all expressions."));
    EXPECT_EQ(bench.value("a"), "[1]");
}

TEST_F(LinkerTest, AVariableAheadOfItsUsersIsOneObjectInGraphAndOutput) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1\nb = a\n"));
    ASSERT_TRUE(bench.link());
    bench.linked<VariableImpl>("s.a")->setValue(constant(5));
    EXPECT_EQ(bench.value("s.b"), "[5]");
}

TEST_F(LinkerTest, APlainVariableBehindItsUsersIsAnotherObjectInTheGraph) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "b = a\na = 1\n"));
    ASSERT_TRUE(bench.link());
    bench.linked<VariableImpl>("s.a")->setValue(constant(5));
    EXPECT_EQ(bench.value("s.a"), "[5]");
    EXPECT_EQ(bench.value("s.b"), "[1]");
}

TEST_F(LinkerTest, AnInputBehindItsUsersFeedsTheGraph) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "b = a + a\ninputvar a\n"));
    ASSERT_TRUE(bench.link());
    for (const double dValue : {5.0, 6.0}) {
        const DoubleVector vFrame{dValue};
        bench.set("s.a", vFrame);
        EXPECT_EQ(bench.value("s.b"), "[" + std::to_string(int(2 * dValue)) + "]");
    }
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
}

TEST_F(LinkerTest, ATwoPointNameIsSoughtInThatScriptOnly) {
    LinkBench bench{{"scripts/t.xpr", "x = 8\n"}};
    ASSERT_TRUE(bench.load("s", "x = 1\ny = t.x\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.y"), "[8]");
}

TEST_F(LinkerTest, TheNamesOfLoadedScriptsAreLinkedWithoutFurtherReports) {
    const auto pRecord = std::make_shared<LoaderStub::Record>();
    Linker linker;
    linker.configure(ParameterTrie(), Handle<ScriptLoader>(new LoaderStub(pRecord)));
    Dictionnary raw("raw");
    raw.add(Handle<Expression>(variable("s.a", reference("s.b"))), false);
    Dictionnary linked("linked");
    EXPECT_FALSE(linker.run(raw, linked));
    EXPECT_THAT(pRecord->m_vAsked, ElementsAre("s", "b", "b"));
}

} // namespace
} // namespace Velmora::Math::Xpr
