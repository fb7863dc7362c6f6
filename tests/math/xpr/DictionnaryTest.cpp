#include <velmora/math/xpr/Dictionnary.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <velmora/MemAccounts.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/InvalidVariable.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include "support/AllocationCounter.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {
namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* ClassLogger = "quillmark.math.xpr.Dictionnary";
constexpr const char* NotAnEntry = "false && \"expression shall be a Function or a Variable\"";

Handle<Expression> makeFunction(const char* in_szName) {
    return Handle<Expression>(new OperatorPlus(in_szName));
}

Handle<Expression> makeVariable(const char* in_szName) {
    Handle<VariableImpl> pVariable(new VariableImpl);
    pVariable->setName(in_szName);
    return Handle<Expression>(pVariable);
}

Handle<Expression> makeConstant(double in_dValue) {
    DoubleVector vValue;
    vValue.push_back(in_dValue);
    return Handle<Expression>(new ConstantImpl(vValue));
}

Handle<Expression> makeDomainValue() {
    static const DoubleVector s_vValue;
    return Handle<Expression>(new DomainValueNoCopyImpl(s_vValue));
}

std::vector<std::string> keysOf(const Dictionnary& in_Dictionnary) {
    std::vector<std::string> vKeys;
    for (const auto& entry : in_Dictionnary) {
        vKeys.push_back(entry.first);
    }
    return vKeys;
}

TEST(DictionnaryTest, NewOneIsEmptyAndHasItsName) {
    const Dictionnary dictionnary("evaluator.raw_expressions");

    EXPECT_STREQ(dictionnary.getName(), "evaluator.raw_expressions");
    EXPECT_EQ(dictionnary.size(), 0U);
    EXPECT_TRUE(dictionnary.begin() == dictionnary.end());
}

struct AddCase {
    const char* m_szTestName;
    Handle<Expression> (*m_pMake)();
    const char* m_szMessage;
    const char* m_szKey;
};

class DictionnaryAddTest : public testing::TestWithParam<AddCase> {};

TEST_P(DictionnaryAddTest, LogsTheKindAndStoresUnderTheName) {
    const LogCapture log(ClassLogger);
    Dictionnary dictionnary("d");
    const Handle<Expression> pExpression = GetParam().m_pMake();

    EXPECT_TRUE(dictionnary.add(pExpression, false));

    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL), ElementsAre(GetParam().m_szMessage));
    EXPECT_THAT(keysOf(dictionnary), ElementsAre(GetParam().m_szKey));
    EXPECT_EQ(&*dictionnary.findExpression(GetParam().m_szKey), &*pExpression);
}

INSTANTIATE_TEST_SUITE_P(Kinds, DictionnaryAddTest,
                         testing::Values(AddCase{"Function", [] { return makeFunction("s.f"); },
                                                 "add function \"s.f\"", "s.f"},
                                         AddCase{"Variable", [] { return makeVariable("s.x"); },
                                                 "add variable \"s.x\"", "s.x"},
                                         AddCase{"Constant", [] { return makeConstant(2.0); },
                                                 "add constant \"Constant_[2]\"", "Constant_[2]"}),
                         [](const auto& in_info) {
                             return std::string(in_info.param.m_szTestName);
                         });

TEST(DictionnaryTest, AddRefusesWhatIsNeitherFunctionNorVariableNorConstant) {
    Dictionnary dictionnary("d");

    for (const Handle<Expression>& pExpression : {Handle<Expression>(), makeDomainValue()}) {
        const AssertionCapture assertions;
        EXPECT_FALSE(dictionnary.add(pExpression, true));
        EXPECT_THAT(assertions.expressions(), ElementsAre(NotAnEntry));
    }
    EXPECT_EQ(dictionnary.size(), 0U);
}

TEST(DictionnaryTest, SecondExpressionOfANameIsRefusedAndTheFirstStays) {
    const LogCapture log(ClassLogger);
    Dictionnary dictionnary("d");
    const Handle<Expression> pFirst = makeVariable("s.x");
    ASSERT_TRUE(dictionnary.add(pFirst, false));

    EXPECT_FALSE(dictionnary.add(makeFunction("s.x"), false));

    EXPECT_EQ(log.count(DEBUG_LOG_LEVEL,
                        "Failed to add expression: s.x. An expression with the same name already "
                        "exists in this dictionnary. "),
              1U);
    EXPECT_EQ(dictionnary.size(), 1U);
    EXPECT_EQ(&*dictionnary.findExpression("s.x"), &*pFirst);
}

TEST(DictionnaryTest, SecondExpressionOfANameIsIgnoredOnRequestAndTheFirstStays) {
    const LogCapture log(ClassLogger);
    Dictionnary dictionnary("d");
    const Handle<Expression> pFirst = makeVariable("s.x");
    ASSERT_TRUE(dictionnary.add(pFirst, true));

    EXPECT_TRUE(dictionnary.add(makeVariable("s.x"), true));

    EXPECT_FALSE(log.contains(DEBUG_LOG_LEVEL, "Failed to add expression"));
    EXPECT_EQ(&*dictionnary.findExpression("s.x"), &*pFirst);
}

TEST(DictionnaryTest, EntriesAreWalkedInTheOrderOfTheirFirstInsertion) {
    Dictionnary dictionnary("d");
    std::vector<std::string> vNames;
    for (int i = 0; i < 200; ++i) {
        vNames.push_back("s." + std::to_string((i * 7919) % 1000));
        ASSERT_TRUE(dictionnary.add(makeVariable(vNames.back().c_str()), false));
    }
    dictionnary.add(makeVariable(vNames.front().c_str()), true);

    EXPECT_EQ(keysOf(dictionnary), vNames);
    EXPECT_EQ(dictionnary.size(), vNames.size());
}

TEST(DictionnaryTest, EntryKeepsTheKeyOfItsInsertionWhenTheExpressionIsRenamed) {
    Dictionnary dictionnary("d");
    const Handle<Expression> pExpression = makeVariable("before");
    dictionnary.add(pExpression, false);

    Handle<VariableImpl>(pExpression)->setName("after");

    EXPECT_FALSE(dictionnary.findExpression("before").isNull());
    EXPECT_TRUE(dictionnary.findExpression("after").isNull());
}

TEST(DictionnaryTest, UnknownNameGivesNullAndADebugLine) {
    const LogCapture log(ClassLogger);
    const Dictionnary dictionnary("d");

    EXPECT_TRUE(dictionnary.findExpression("s.x").isNull());
    EXPECT_TRUE(dictionnary.findFunction("s.f").isNull());
    EXPECT_TRUE(dictionnary.findVariable("s.v").isNull());

    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL),
                ElementsAre("can't find expression: s.x", "can't find expression: s.f",
                            "can't find expression: s.v"));
    EXPECT_EQ(log.lines().size(), 3U);
}

TEST(DictionnaryTest, FindByKindGivesTheExpressionItself) {
    Dictionnary dictionnary("d");
    const Handle<Expression> pFunction = makeFunction("s.f");
    const Handle<Expression> pVariable = makeVariable("s.x");
    dictionnary.add(pFunction, false);
    dictionnary.add(pVariable, false);

    const Handle<Function> pFoundFunction = dictionnary.findFunction("s.f");
    const Handle<Variable> pFoundVariable = dictionnary.findVariable("s.x");

    EXPECT_EQ(&*Handle<Expression>(pFoundFunction), &*pFunction);
    EXPECT_EQ(&*Handle<Expression>(pFoundVariable), &*pVariable);
    // The test, the dictionary and the look-up.
    EXPECT_EQ(pFunction.getReferenceCount(), 3U);
    EXPECT_EQ(pVariable.getReferenceCount(), 3U);
}

TEST(DictionnaryTest, NameOfTheWrongKindGivesNullWithoutAMessage) {
    Dictionnary dictionnary("d");
    dictionnary.add(makeFunction("s.f"), false);
    dictionnary.add(makeVariable("s.x"), false);
    const LogCapture log(ClassLogger);

    EXPECT_TRUE(dictionnary.findFunction("s.x").isNull());
    EXPECT_TRUE(dictionnary.findVariable("s.f").isNull());

    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(DictionnaryTest, FindComparesNamesAndNotIdentities) {
    const LogCapture log(ClassLogger);
    Dictionnary dictionnary("d");
    dictionnary.add(makeFunction("s.f"), false);
    dictionnary.add(makeVariable("s.x"), false);

    EXPECT_TRUE(dictionnary.find(makeFunction("s.f")));
    EXPECT_TRUE(dictionnary.find(makeVariable("s.x")));
    EXPECT_TRUE(dictionnary.find(makeVariable("s.f")));
    EXPECT_FALSE(dictionnary.find(makeFunction("s.g")));

    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL),
                ElementsAre("add function \"s.f\"", "add variable \"s.x\"",
                            "searching function \"s.f\"", "searching variable \"s.x\"",
                            "searching variable \"s.f\"", "searching function \"s.g\"",
                            "can't find expression: s.g"));
}

TEST(DictionnaryTest, FindRefusesConstantsAlthoughAddTakesThem) {
    Dictionnary dictionnary("d");
    const Handle<Expression> pConstant = makeConstant(1.0);
    ASSERT_TRUE(dictionnary.add(pConstant, false));

    for (const Handle<Expression>& pExpression : {pConstant, Handle<Expression>()}) {
        const AssertionCapture assertions;
        EXPECT_FALSE(dictionnary.find(pExpression));
        EXPECT_THAT(assertions.expressions(), ElementsAre(NotAnEntry));
    }
}

TEST(DictionnaryTest, NullNameFailsAnAssertion) {
    const AssertionCapture assertions;
    const Dictionnary dictionnary(nullptr);

    EXPECT_TRUE(dictionnary.findExpression(nullptr).isNull());

    EXPECT_STREQ(dictionnary.getName(), "");
    EXPECT_THAT(assertions.expressions(), ElementsAre("0 != in_szName"));
}

TEST(DictionnaryTest, ClearForgetsEverythingAndReleasesIt) {
    Dictionnary dictionnary("d");
    const Handle<Expression> pExpression = makeVariable("s.x");
    dictionnary.add(pExpression, false);

    dictionnary.clear();

    EXPECT_EQ(dictionnary.size(), 0U);
    EXPECT_TRUE(dictionnary.findExpression("s.x").isNull());
    EXPECT_EQ(pExpression.getReferenceCount(), 1U);
    EXPECT_TRUE(dictionnary.add(makeFunction("s.x"), false));
}

TEST(DictionnaryTest, DestructionReleasesTheExpressions) {
    const Handle<Expression> pExpression = makeVariable("s.x");
    {
        Dictionnary dictionnary("d");
        dictionnary.add(pExpression, false);
        EXPECT_EQ(pExpression.getReferenceCount(), 2U);
    }
    EXPECT_EQ(pExpression.getReferenceCount(), 1U);
}

/// Gives the insertion to the test.
class NamingDictionnary : public Dictionnary {
public:
    using Dictionnary::addExpression;
    using Dictionnary::Dictionnary;
};

TEST(DictionnaryTest, DerivedClassInsertsUnderANameOfItsOwn) {
    NamingDictionnary dictionnary("d");
    const Handle<Expression> pExpression = makeVariable("s.x");

    EXPECT_TRUE(dictionnary.addExpression("alias", pExpression, false));
    EXPECT_FALSE(dictionnary.addExpression("alias", makeVariable("s.y"), false));

    EXPECT_EQ(&*dictionnary.findExpression("alias"), &*pExpression);
}

TEST(DictionnaryTest, ShallowCopyHoldsTheSameExpressionsAndIsIndependent) {
    Dictionnary dictionnary("d");
    const Handle<Expression> pExpression = makeVariable("s.x");
    dictionnary.add(pExpression, false);

    Dictionnary copy(dictionnary);
    copy.add(makeVariable("s.y"), false);

    EXPECT_STREQ(copy.getName(), "d");
    EXPECT_EQ(copy.getLogger().getName(), dictionnary.getLogger().getName());
    EXPECT_EQ(&*copy.findExpression("s.x"), &*pExpression);
    EXPECT_EQ(dictionnary.size(), 1U);
    EXPECT_EQ(copy.size(), 2U);
}

TEST(DictionnaryTest, AssignmentTakesNameLoggerAndExpressions) {
    Dictionnary dictionnary("d");
    const Handle<Expression> pExpression = makeVariable("s.x");
    dictionnary.add(pExpression, false);
    Dictionnary other("other");
    other.add(makeVariable("s.y"), false);

    other = dictionnary;

    EXPECT_STREQ(other.getName(), "d");
    EXPECT_EQ(other.getLogger().getName(), "quillmark.math.xpr.Dictionnary.d");
    EXPECT_THAT(keysOf(other), ElementsAre("s.x"));
    EXPECT_EQ(&*other.findExpression("s.x"), &*pExpression);
}

TEST(DictionnaryTest, SelfAssignmentChangesNothing) {
    Dictionnary dictionnary("d");
    const Handle<Expression> pExpression = makeVariable("s.x");
    dictionnary.add(pExpression, false);

    const Dictionnary& same = dictionnary;
    dictionnary = same;

    EXPECT_STREQ(dictionnary.getName(), "d");
    EXPECT_EQ(&*dictionnary.findExpression("s.x"), &*pExpression);
    EXPECT_EQ(pExpression.getReferenceCount(), 2U);
}

TEST(DictionnaryTest, LoggerIsAChildOfTheClassLogger) {
    EXPECT_EQ(Dictionnary("evaluator.raw_expressions").getLogger().getName(),
              "quillmark.math.xpr.Dictionnary.evaluator.raw_expressions");
    EXPECT_EQ(Dictionnary("").getLogger().getName(), "quillmark.math.xpr.Dictionnary.");
}

TEST(DictionnaryTest, LinesBearTheLoggerOfTheDictionary) {
    const LogCapture log(ClassLogger);
    const Dictionnary dictionnary("some.name");

    dictionnary.findExpression("s.x");

    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].logger, "quillmark.math.xpr.Dictionnary.some.name");
    EXPECT_EQ(log.lines()[0].file, "Dictionnary.cpp");
}

TEST(DictionnaryTest, LevelIsTheOneThatWasInForceAtConstruction) {
    std::unique_ptr<Dictionnary> pDictionnary;
    {
        const LogCapture quiet(ClassLogger, ERROR_LOG_LEVEL);
        pDictionnary = std::make_unique<Dictionnary>("d");
    }
    EXPECT_EQ(pDictionnary->getLogger().getCachedLogLevel(), ERROR_LOG_LEVEL);
    const LogCapture log(ClassLogger, DEBUG_LOG_LEVEL);

    pDictionnary->findExpression("s.x");
    EXPECT_THAT(log.lines(), IsEmpty());

    pDictionnary->reset();
    pDictionnary->findExpression("s.x");
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST(DictionnaryTest, LookUpsDoNotAllocateOnceTheLongestNameHasBeenSeen) {
    const LogCapture quiet(ClassLogger, ERROR_LOG_LEVEL);
    const std::string strLong = "script.a_name_that_is_longer_than_any_small_string";
    const std::string strUnknown = "script.another_name_that_nobody_knows";
    Dictionnary dictionnary("d");
    dictionnary.add(makeVariable(strLong.c_str()), false);
    bool bFound = false;
    bool bUnknownFound = true;

    const Testing::AllocationCounter counter;
    for (int i = 0; i < 10; ++i) {
        bFound = !dictionnary.findVariable(strLong.c_str()).isNull();
        bUnknownFound = !dictionnary.findExpression(strUnknown.c_str()).isNull();
    }
    const std::size_t uiAllocations = counter.allocations();

    EXPECT_EQ(uiAllocations, 0U);
    EXPECT_TRUE(bFound);
    EXPECT_FALSE(bUnknownFound);
}

TEST(DictionnaryTest, WritesOneExpressionALineAndNullForNone) {
    Dictionnary source("d");
    source.add(makeConstant(1.5), false);
    source.add(Handle<Expression>(new InvalidVariable), false);
    const AssertionCapture assertions;
    const Dictionnary copy(source, "copy", false);
    std::ostringstream expected;
    expected << *copy.findExpression("Constant_[1.5]") << "\nnull\n";

    std::ostringstream written;
    EXPECT_EQ(&copy.write(written), &written);

    EXPECT_EQ(written.str(), expected.str());
}

TEST(DictionnaryTest, WritingTracesUnderTheLabelOfTheDestructor) {
    const LogCapture log(ClassLogger, TRACE_LOG_LEVEL);
    {
        const Dictionnary dictionnary("d");
        std::ostringstream out;
        out << dictionnary;
        // One line on entry and one on exit.
        EXPECT_EQ(log.count(TRACE_LOG_LEVEL, "Dictionnary::~Dictionnary"), 2U);
    }
    EXPECT_EQ(log.count(TRACE_LOG_LEVEL, "Dictionnary::~Dictionnary"), 4U);
}

TEST(DictionnaryTest, MemoryIsCountedUnderItsAccount) {
    const auto liveBlocks = [] {
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.name == "Dictionnary") {
                return account.liveBlocks;
            }
        }
        return std::size_t{0};
    };
    const std::size_t uiBefore = liveBlocks();

    auto pDictionnary = std::make_unique<Dictionnary>("d");

    EXPECT_STREQ(Dictionnary::getMemAccountName(), "Dictionnary");
    EXPECT_EQ(liveBlocks(), uiBefore + 1);
    pDictionnary.reset();
    EXPECT_EQ(liveBlocks(), uiBefore);
}

} // namespace
} // namespace Velmora::Math::Xpr
