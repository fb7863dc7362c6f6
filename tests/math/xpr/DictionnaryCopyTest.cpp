#include <velmora/math/xpr/Dictionnary.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/InvalidVariable.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {
namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using testing::ElementsAre;
using testing::IsEmpty;

DoubleVector vectorOf(double in_dValue) {
    DoubleVector vValue;
    vValue.push_back(in_dValue);
    return vValue;
}

Handle<DomainVariableImpl> makeInput(const char* in_szName) {
    Handle<DomainVariableImpl> pInput(new DomainVariableImpl);
    pInput->setName(in_szName);
    return pInput;
}

Handle<OperatorPlus> makeSum(const char* in_szName, const Handle<Expression>& in_pLeft,
                             const Handle<Expression>& in_pRight) {
    Handle<OperatorPlus> pSum(new OperatorPlus(in_szName));
    pSum->getLeftArgument()->setValue(in_pLeft);
    pSum->getRightArgument()->setValue(in_pRight);
    return pSum;
}

double valueOf(const Dictionnary& in_Dictionnary, const char* in_szName) {
    DoubleVector vValue;
    EXPECT_TRUE(in_Dictionnary.findExpression(in_szName)->evaluate(vValue)) << in_szName;
    return vValue.size() == 1 ? vValue[0] : -1.0;
}

Handle<ExpressionBaseImpl> nodeOf(const Dictionnary& in_Dictionnary, const char* in_szName) {
    return Handle<ExpressionBaseImpl>(in_Dictionnary.findExpression(in_szName));
}

DomainValueNoCopyImpl& domainValueOf(const Handle<ExpressionBaseImpl>& in_pVariable) {
    return *Handle<DomainValueNoCopyImpl>(Handle<VariableImpl>(in_pVariable)->getValue());
}

void collectIds(const ExpressionBaseImpl& in_Node, std::set<unsigned long>& inout_Ids) {
    inout_Ids.insert(in_Node.getId());
    for (const auto* pChild = in_Node.getChildBegin(); pChild != in_Node.getChildEnd(); ++pChild) {
        collectIds(**pChild, inout_Ids);
    }
}

/// Every node that the dictionary reaches downward, and the parents of each.
std::set<unsigned long> idsOf(const Dictionnary& in_Dictionnary) {
    std::set<unsigned long> ids;
    for (const auto& entry : in_Dictionnary) {
        collectIds(*Handle<ExpressionBaseImpl>(entry.second), ids);
    }
    return ids;
}

std::vector<unsigned long> intersection(const std::set<unsigned long>& in_A,
                                        const std::set<unsigned long>& in_B) {
    std::vector<unsigned long> vBoth;
    for (const unsigned long ulId : in_A) {
        if (in_B.count(ulId) != 0) {
            vBoth.push_back(ulId);
        }
    }
    return vBoth;
}

/// An input s.x, and two sums that read it: s.twice = s.x + s.x, s.thrice = s.twice + s.x.
class DictionnaryCopyTest : public testing::Test {
protected:
    DictionnaryCopyTest() {
        const Handle<DomainVariableImpl> pInput = makeInput("s.x");
        const Handle<OperatorPlus> pTwice =
            makeSum("s.twice", Handle<Expression>(pInput), Handle<Expression>(pInput));
        m_Source.add(Handle<Expression>(pInput), false);
        m_Source.add(Handle<Expression>(pTwice), false);
        m_Source.add(Handle<Expression>(makeSum("s.thrice", Handle<Expression>(pTwice),
                                                Handle<Expression>(pInput))),
                     false);
    }

    Dictionnary m_Source{"source"};
};

TEST_F(DictionnaryCopyTest, KeepsKeysOrderAndSharing) {
    const Dictionnary copy(m_Source, "copy", true);

    std::vector<std::string> vKeys;
    for (const auto& entry : copy) {
        vKeys.push_back(entry.first);
    }
    EXPECT_THAT(vKeys, ElementsAre("s.x", "s.twice", "s.thrice"));
    EXPECT_STREQ(copy.getName(), "copy");
    EXPECT_EQ(copy.getLogger().getName(), "quillmark.math.xpr.Dictionnary.copy");
    const Handle<ExpressionBaseImpl> pLeft = nodeOf(copy, "s.thrice")->getChildAt(0);
    EXPECT_EQ(&*pLeft->getChildAt(0), &*nodeOf(copy, "s.twice"));
}

TEST_F(DictionnaryCopyTest, EntryStandsUnderTheKeyOfTheSourceAndNotUnderTheNameOfTheCopy) {
    Handle<VariableImpl>(m_Source.findExpression("s.x"))->setName("renamed");

    const Dictionnary copy(m_Source, "copy", true);

    ASSERT_FALSE(copy.findVariable("s.x").isNull());
    EXPECT_STREQ(copy.findVariable("s.x")->getName(), "renamed");
}

TEST_F(DictionnaryCopyTest, EmptyOrNullNameIsEmpty) {
    EXPECT_STREQ(Dictionnary(m_Source, "", true).getName(), "");
    EXPECT_STREQ(Dictionnary(m_Source, nullptr, true).getName(), "");
}

TEST_F(DictionnaryCopyTest, CloneHasTheSameNameAndReachesNoNodeOfTheSource) {
    const std::unique_ptr<Cloneable> pClone(m_Source.clone());
    const auto* pCopy = dynamic_cast<const Dictionnary*>(pClone.get());
    ASSERT_NE(pCopy, nullptr);

    EXPECT_STREQ(pCopy->getName(), "source");
    EXPECT_EQ(pCopy->size(), m_Source.size());
    EXPECT_THAT(intersection(idsOf(*pCopy), idsOf(m_Source)), IsEmpty());
}

TEST_F(DictionnaryCopyTest, InputsOfTheCopyAreItsOwnAndStartFromZero) {
    const DoubleVector vSource = vectorOf(5.0);
    m_Source.findVariable("s.x")->setValue(vSource);
    const Dictionnary copy(m_Source, "copy", true);
    EXPECT_EQ(valueOf(copy, "s.thrice"), 0.0);
    EXPECT_EQ(valueOf(m_Source, "s.thrice"), 15.0);

    const DoubleVector vCopy = vectorOf(2.0);
    copy.findVariable("s.x")->setValue(vCopy);

    EXPECT_EQ(valueOf(copy, "s.thrice"), 6.0);
    EXPECT_EQ(valueOf(m_Source, "s.thrice"), 15.0);
}

TEST_F(DictionnaryCopyTest, SourceKeepsItsVectorsAndItsValuesStayCurrent) {
    const DoubleVector vValue = vectorOf(5.0);
    m_Source.findVariable("s.x")->setValue(vValue);
    ASSERT_EQ(valueOf(m_Source, "s.thrice"), 15.0);

    const Dictionnary copy(m_Source, "copy", true);

    EXPECT_TRUE(domainValueOf(nodeOf(m_Source, "s.x")).pointsAt(vValue));
    for (const char* szName : {"s.x", "s.twice", "s.thrice"}) {
        EXPECT_TRUE(nodeOf(m_Source, szName)->isValid()) << szName;
        EXPECT_FALSE(nodeOf(copy, szName)->isValid()) << szName;
    }
    EXPECT_TRUE(domainValueOf(nodeOf(m_Source, "s.x")).isValid());
}

TEST_F(DictionnaryCopyTest, SourceThatIsNotCurrentStaysSo) {
    const DoubleVector vFirst = vectorOf(5.0);
    const DoubleVector vSecond = vectorOf(7.0);
    m_Source.findVariable("s.x")->setValue(vFirst);
    valueOf(m_Source, "s.thrice");
    m_Source.findVariable("s.x")->setValue(vSecond);

    const Dictionnary copy(m_Source, "copy", true);

    EXPECT_FALSE(nodeOf(m_Source, "s.thrice")->isValid());
    EXPECT_FALSE(domainValueOf(nodeOf(m_Source, "s.x")).isValid());
    EXPECT_EQ(valueOf(m_Source, "s.thrice"), 21.0);
}

TEST_F(DictionnaryCopyTest, NameOfTheSourcesDomainValueStillTellsItsVector) {
    const DoubleVector vValue = vectorOf(5.0);
    m_Source.findVariable("s.x")->setValue(vValue);
    const DomainValueNoCopyImpl& domainValue = domainValueOf(nodeOf(m_Source, "s.x"));
    ASSERT_STREQ(domainValue.getName(), "DomainValue_[5]");

    const Dictionnary copy(m_Source, "copy", true);

    EXPECT_STREQ(domainValue.getName(), "DomainValue_[5]");
    EXPECT_STREQ(domainValueOf(nodeOf(copy, "s.x")).getName(), "DomainValue_[0]");
}

TEST_F(DictionnaryCopyTest, AnotherCopyThatSharesTheInputsMayDieBehindAClone) {
    auto pSharing = std::make_unique<Dictionnary>(m_Source, "sharing", false);
    ASSERT_EQ(valueOf(m_Source, "s.thrice"), 0.0);
    const std::unique_ptr<Cloneable> pClone(m_Source.clone());
    pSharing.reset();

    EXPECT_EQ(valueOf(m_Source, "s.thrice"), 0.0);
    const Handle<ExpressionBaseImpl> pInput = nodeOf(m_Source, "s.x");
    pInput->invalidate();
    EXPECT_EQ(valueOf(m_Source, "s.thrice"), 0.0);
}

TEST_F(DictionnaryCopyTest, CopyingReadsNoVectorOfTheHost) {
    {
        const DoubleVector vGone = vectorOf(5.0);
        m_Source.findVariable("s.x")->setValue(vGone);
    }
    const Dictionnary copy(m_Source, "copy", true);

    EXPECT_EQ(valueOf(copy, "s.thrice"), 0.0);
}

TEST_F(DictionnaryCopyTest, CopyOutlivesItsSource) {
    auto pSource = std::make_unique<Dictionnary>(m_Source);
    m_Source.clear();
    const Dictionnary copy(*pSource, "copy", true);

    pSource.reset();

    EXPECT_EQ(valueOf(copy, "s.thrice"), 0.0);
    const DoubleVector vValue = vectorOf(3.0);
    copy.findVariable("s.x")->setValue(vValue);
    EXPECT_EQ(valueOf(copy, "s.thrice"), 9.0);
}

TEST_F(DictionnaryCopyTest, SourceOutlivesItsCopy) {
    const DoubleVector vValue = vectorOf(3.0);
    m_Source.findVariable("s.x")->setValue(vValue);
    std::make_unique<Dictionnary>(m_Source, "copy", true).reset();

    EXPECT_EQ(valueOf(m_Source, "s.thrice"), 9.0);
}

TEST_F(DictionnaryCopyTest, SealedSourceIsLeftAloneAndItsCopyFollowsItsOwnInputs) {
    nodeOf(m_Source, "s.thrice")->seal();
    const DoubleVector vSource = vectorOf(5.0);
    m_Source.findVariable("s.x")->setValue(vSource);
    ASSERT_EQ(valueOf(m_Source, "s.thrice"), 15.0);

    const Dictionnary copy(m_Source, "copy", true);
    EXPECT_THAT(intersection(idsOf(copy), idsOf(m_Source)), IsEmpty());
    const DoubleVector vCopy = vectorOf(1.0);
    copy.findVariable("s.x")->setValue(vCopy);
    EXPECT_EQ(valueOf(copy, "s.thrice"), 3.0);
    nodeOf(copy, "s.thrice")->seal();
    const DoubleVector vNext = vectorOf(2.0);
    copy.findVariable("s.x")->setValue(vNext);
    EXPECT_EQ(valueOf(copy, "s.thrice"), 6.0);

    EXPECT_TRUE(nodeOf(m_Source, "s.thrice")->isValid());
    m_Source.findVariable("s.x")->setValue(vNext);
    EXPECT_EQ(valueOf(m_Source, "s.thrice"), 6.0);
}

TEST_F(DictionnaryCopyTest, WithoutUpdateInputsShareTheDomainValueOfTheSource) {
    const Dictionnary copy(m_Source, "copy", false);

    EXPECT_EQ(&domainValueOf(nodeOf(copy, "s.x")), &domainValueOf(nodeOf(m_Source, "s.x")));
    EXPECT_NE(&*nodeOf(copy, "s.x"), &*nodeOf(m_Source, "s.x"));
    const DoubleVector vValue = vectorOf(4.0);
    m_Source.findVariable("s.x")->setValue(vValue);
    EXPECT_EQ(valueOf(copy, "s.thrice"), 12.0);
}

TEST_F(DictionnaryCopyTest, StoryOfTheUpdateIsInTheLog) {
    const std::string strInput = std::to_string(nodeOf(m_Source, "s.x")->getId());
    const std::string strOldValue = std::to_string(domainValueOf(nodeOf(m_Source, "s.x")).getId());
    const LogCapture log("quillmark.math.xpr.Dictionnary");

    const Dictionnary copy(m_Source, "copy", true);

    const std::string strCopy = std::to_string(nodeOf(copy, "s.x")->getId());
    const std::string strNewValue = std::to_string(domainValueOf(nodeOf(copy, "s.x")).getId());
    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL),
                ElementsAre("updating DomainVariable=s.x", "parent: " + strInput + " (s.x)",
                            "parent ID:" + strInput + " resides in the orginal dictionnary",
                            "parent: " + strCopy + " (s.x)",
                            "parent ID:" + strCopy + " resides in the dictionnary copy",
                            "parent ID:" + strCopy + " replacing child ID: " + strOldValue +
                                " by child ID: " + strNewValue));
    EXPECT_EQ(log.lines()[0].logger, "quillmark.math.xpr.Dictionnary.copy");
}

TEST_F(DictionnaryCopyTest, ParentWithoutANameOfAnInputIsToldByItsNumberAlone) {
    nodeOf(m_Source, "s.twice")->seal();
    const std::string strTwice = std::to_string(nodeOf(m_Source, "s.twice")->getId());
    const LogCapture log("quillmark.math.xpr.Dictionnary");

    const Dictionnary copy(m_Source, "copy", true);

    EXPECT_THAT(
        log.messages(DEBUG_LOG_LEVEL),
        testing::IsSupersetOf({"parent: " + strTwice,
                               "parent ID:" + strTwice + " resides in the orginal dictionnary"}));
}

TEST_F(DictionnaryCopyTest, NothingIsToldWithoutInputs) {
    Dictionnary source("source");
    const Handle<Expression> pVariable(new VariableImpl);
    source.add(pVariable, false);
    const LogCapture log("quillmark.math.xpr.Dictionnary");

    const Dictionnary copy(source, "copy", true);

    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DictionnaryCopyTest, VariableThatSharesADomainValueOutsideBothIsMovedToTheCopy) {
    // A parent that the source doesn't reach counts as the copy's.
    const Handle<VariableImpl> pStranger(new VariableImpl);
    pStranger->setValue(
        Handle<Expression>(Handle<VariableImpl>(nodeOf(m_Source, "s.x"))->getValue()));

    const Dictionnary copy(m_Source, "copy", true);

    const DoubleVector vValue = vectorOf(4.0);
    copy.findVariable("s.x")->setValue(vValue);
    DoubleVector vRead;
    ASSERT_TRUE(pStranger->evaluate(vRead));
    EXPECT_EQ(vRead[0], 4.0);
}

TEST_F(DictionnaryCopyTest, SealedOperatorOutsideBothIsLeftAlone) {
    const Handle<Expression> pInput = m_Source.findExpression("s.x");
    const Handle<OperatorPlus> pOutside = makeSum("host.sum", pInput, pInput);
    pOutside->seal();
    const std::string strOutside = std::to_string(pOutside->getId());
    const LogCapture log("quillmark.math.xpr.Dictionnary");
    const AssertionCapture assertions;

    const Dictionnary copy(m_Source, "copy", true);

    EXPECT_EQ(
        log.count(DEBUG_LOG_LEVEL, "parent ID:" + strOutside + " resides in the dictionnary copy"),
        2U);
    EXPECT_EQ(log.count(DEBUG_LOG_LEVEL, "parent ID:" + strOutside + " replacing"), 0U);
    EXPECT_EQ(assertions.count(), 0U);
    const DoubleVector vValue = vectorOf(4.0);
    m_Source.findVariable("s.x")->setValue(vValue);
    DoubleVector vRead;
    ASSERT_TRUE(pOutside->evaluate(vRead));
    EXPECT_EQ(vRead[0], 8.0);
}

TEST_F(DictionnaryCopyTest, SealedOperatorThatHasDiedDoesNotDisturbTheCopy) {
    const Handle<Expression> pInput = m_Source.findExpression("s.x");
    makeSum("host.sum", pInput, pInput)->seal();
    const AssertionCapture assertions;

    const Dictionnary copy(m_Source, "copy", true);

    EXPECT_EQ(assertions.count(), 0U);
    EXPECT_THAT(intersection(idsOf(copy), idsOf(m_Source)), IsEmpty());
}

TEST_F(DictionnaryCopyTest, ExpressionThatCannotBeCopiedFailsAnAssertionAndTheRestIsCopied) {
    Dictionnary source("source");
    source.add(Handle<Expression>(new InvalidVariable), false);
    source.add(Handle<Expression>(makeInput("s.x")), false);
    const AssertionCapture assertions;

    const Dictionnary copy(source, "copy", true);

    EXPECT_THAT(assertions.expressions(), ElementsAre("!pExpr.isNull()"));
    EXPECT_EQ(copy.size(), 2U);
    EXPECT_TRUE(copy.begin()->second.isNull());
    EXPECT_FALSE(copy.findVariable("s.x").isNull());
    // A copy of a copy meets the null entry.
    const Dictionnary again(copy, "again", true);
    EXPECT_EQ(assertions.count("!pExpr.isNull()"), 2U);
    EXPECT_EQ(again.size(), 2U);
}

/// What the linker makes of an input that an expression reaches before the input's own turn: the
/// entry, and a twin of it inside the graph, which share a domain value.
class DictionnaryTwinTest : public testing::Test {
protected:
    DictionnaryTwinTest() {
        const Handle<DomainVariableImpl> pInput = makeInput("s.x");
        m_pTwin = Handle<Expression>(pInput->copy());
        m_Source.add(Handle<Expression>(makeSum("s.sum", m_pTwin, m_pTwin)), false);
        m_Source.add(Handle<Expression>(pInput), false);
    }

    Handle<Expression> m_pTwin;
    Dictionnary m_Source{"source"};
};

TEST_F(DictionnaryTwinTest, TwinsOfTheCopyShareADomainValueOfItsOwn) {
    const DoubleVector vSource = vectorOf(5.0);
    m_Source.findVariable("s.x")->setValue(vSource);
    const Dictionnary copy(m_Source, "copy", true);
    EXPECT_EQ(valueOf(copy, "s.sum"), 0.0);

    const DoubleVector vCopy = vectorOf(2.0);
    copy.findVariable("s.x")->setValue(vCopy);

    EXPECT_EQ(valueOf(copy, "s.sum"), 4.0);
    EXPECT_EQ(valueOf(m_Source, "s.sum"), 10.0);
    EXPECT_THAT(intersection(idsOf(copy), idsOf(m_Source)), IsEmpty());
}

TEST_F(DictionnaryTwinTest, TwinThatIsNoEntryHasForgottenTheDomainValueOfTheSource) {
    const Dictionnary copy(m_Source, "copy", true);
    const Handle<ExpressionBaseImpl> pTwin = nodeOf(copy, "s.sum")->getChildAt(0)->getChildAt(0);
    const DoubleVector vSource = vectorOf(5.0);
    m_Source.findVariable("s.x")->setValue(vSource);

    const DoubleVector vCopy = vectorOf(2.0);
    Handle<Variable>(pTwin)->setValue(vCopy);

    EXPECT_EQ(valueOf(copy, "s.x"), 2.0);
    EXPECT_EQ(valueOf(m_Source, "s.x"), 5.0);
}

TEST_F(DictionnaryTwinTest, TwinsThatAreBothEntriesStillShareInTheCopy) {
    Handle<VariableImpl>(m_pTwin)->setName("s.y");
    m_Source.add(m_pTwin, false);

    const Dictionnary copy(m_Source, "copy", true);

    const DoubleVector vCopy = vectorOf(2.0);
    copy.findVariable("s.x")->setValue(vCopy);
    EXPECT_EQ(valueOf(copy, "s.y"), 2.0);
    EXPECT_EQ(valueOf(copy, "s.sum"), 4.0);
    EXPECT_THAT(intersection(idsOf(copy), idsOf(m_Source)), IsEmpty());
}

TEST(DictionnaryHiddenInputTest, InputThatIsNoEntryBecomesTheCopysOwnToo) {
    Dictionnary source("source");
    const Handle<Expression> pHidden(makeInput("t.x"));
    source.add(Handle<Expression>(makeSum("s.a", pHidden, pHidden)), false);
    source.add(Handle<Expression>(makeSum("s.b", pHidden, pHidden)), false);
    const DoubleVector vValue = vectorOf(5.0);
    Handle<Variable>(pHidden)->setValue(vValue);
    const LogCapture log("quillmark.math.xpr.Dictionnary");

    const Dictionnary copy(source, "copy", true);

    EXPECT_EQ(log.count(DEBUG_LOG_LEVEL, "updating DomainVariable=t.x"), 1U);
    EXPECT_THAT(intersection(idsOf(copy), idsOf(source)), IsEmpty());
    EXPECT_EQ(&*nodeOf(copy, "s.a")->getChildAt(0)->getChildAt(0),
              &*nodeOf(copy, "s.b")->getChildAt(0)->getChildAt(0));
    EXPECT_EQ(valueOf(copy, "s.a"), 0.0);
    EXPECT_EQ(valueOf(source, "s.a"), 10.0);
}

TEST(DictionnaryInputBoundToExpressionTest, CopyKeepsAnInitialValueOfItsOwn) {
    Dictionnary source("source");
    const Handle<DomainVariableImpl> pInput = makeInput("s.x");
    const Handle<Expression> pOne(makeInput("s.one"));
    Variable& input = *pInput;
    input.setValue(pOne);
    source.add(Handle<Expression>(pInput), false);
    const AssertionCapture assertions;

    const Dictionnary copy(source, "copy", true);

    EXPECT_EQ(valueOf(copy, "s.x"), 0.0);
    EXPECT_THAT(intersection(idsOf(copy), idsOf(source)), IsEmpty());
}

} // namespace
} // namespace Velmora::Math::Xpr
