#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/OperatorSlice.h>

#include <cmath>
#include <functional>
#include <limits>

#include "support/AllocationCounter.h"
#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

const char* const AddSizes =
    "Can't do the addition operation because argument's sizes are differents";
const char* const AddLeft = "Can't do the addition, the left argument does not contain data";
const char* const SubSizes =
    "Can't do the substraction operation because argument's sizes are differents";
const char* const SubLeft = "Can't do the substraction, the left argument does not contain data";
const char* const MultLeft = "Can't do the multiplication, the left argument does not contain data";
const char* const MultRight =
    "Can't do the multiplication, the right argument does not contain data";
const char* const MultSizes =
    "Can't do the multiplication. One of the argument must have a size of one. Only scalar "
    "multiplication a one dimension vector is supported.";
const char* const DivLeft = "Can't do the division, the left argument does not contain data";
const char* const DivRight = "Can't do the division, the right argument does not contain data";
const char* const DivSizes =
    "Can't do the division. The right argument must have a size of one. Only scalar division on a "
    "one dimension vector is supported.";
const char* const DivZero = "Can't do the division. Tried to divide by '0'.";

DoubleVector vectorOf(const Values& in_vValues) {
    DoubleVector vVector;
    for (const double dValue : in_vValues) {
        vVector.push_back(dValue);
    }
    return vVector;
}

/// As text, in which a NaN equals a NaN and the sign of a zero shows.
std::string textOfValues(const DoubleVector& in_vValue) {
    std::ostringstream stream;
    stream << in_vValue;
    return stream.str();
}

template <class Operator>
std::function<bool(const DoubleVector&, const DoubleVector&, DoubleVector&)> calculation() {
    return [](const DoubleVector& in_Left, const DoubleVector& in_Right, DoubleVector& out) {
        return Handle<Operator>(new Operator)->calculate(in_Left, in_Right, out);
    };
}

struct BinaryCase {
    const char* m_szName;
    std::function<bool(const DoubleVector&, const DoubleVector&, DoubleVector&)> m_Calculate;
    Values m_vLeft;
    Values m_vRight;
    /// The value, or the message of the refusal.
    Values m_vResult;
    const char* m_szMessage = nullptr;
};

void PrintTo(const BinaryCase& in_Case, std::ostream* out_pStream) {
    *out_pStream << in_Case.m_szName;
}

class BinaryOperatorsTest : public GraphTest, public ::testing::WithParamInterface<BinaryCase> {};

TEST_P(BinaryOperatorsTest, ComputesOrRefuses) {
    const BinaryCase& testCase = GetParam();
    DoubleVector vResult{77.0, 78.0};
    const bool bDone =
        testCase.m_Calculate(vectorOf(testCase.m_vLeft), vectorOf(testCase.m_vRight), vResult);
    EXPECT_EQ(bDone, testCase.m_szMessage == nullptr);
    if (testCase.m_szMessage == nullptr) {
        EXPECT_EQ(textOfValues(vResult), textOfValues(vectorOf(testCase.m_vResult)));
    } else {
        EXPECT_EQ(valuesOf(vResult), (Values{77.0, 78.0})) << "the output is left alone";
        EXPECT_EQ(takeErrors(), Texts{logged(OperatorLogger, testCase.m_szMessage)});
    }
}

const auto plus = calculation<OperatorPlus>();
const auto minus = calculation<OperatorMinus>();
const auto multiply = calculation<OperatorMultiply>();
const auto divide = calculation<OperatorDivide>();
const auto slice = calculation<OperatorSlice>();

std::string nameOf(const ::testing::TestParamInfo<BinaryCase>& in_Info) {
    return in_Info.param.m_szName;
}

INSTANTIATE_TEST_SUITE_P(
    Plus, BinaryOperatorsTest,
    ::testing::Values(BinaryCase{"Equal", plus, {1, 2, 3}, {4, 5, 6}, {5, 7, 9}},
                      BinaryCase{"Scalars", plus, {1}, {2}, {3}},
                      BinaryCase{"VectorAndScalar", plus, {1, 2}, {1}, {}, AddSizes},
                      BinaryCase{"ScalarAndVector", plus, {1}, {1, 2, 3}, {}, AddSizes},
                      BinaryCase{"BothEmpty", plus, {}, {}, {}, AddLeft},
                      BinaryCase{"LeftEmpty", plus, {}, {1}, {}, AddSizes},
                      BinaryCase{"RightEmpty", plus, {1}, {}, {}, AddSizes},
                      BinaryCase{"NotANumber", plus, {NaN, 1}, {1, NaN}, {NaN, NaN}},
                      BinaryCase{"NegativeZeros", plus, {-0.0}, {-0.0}, {-0.0}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Minus, BinaryOperatorsTest,
    ::testing::Values(BinaryCase{"Equal", minus, {1, 2, 3}, {4, 4, 4}, {-3, -2, -1}},
                      BinaryCase{"Scalars", minus, {1}, {3}, {-2}},
                      BinaryCase{"VectorAndScalar", minus, {1, 2, 3}, {1}, {}, SubSizes},
                      BinaryCase{"ScalarAndVector", minus, {1}, {1, 2, 3}, {}, SubSizes},
                      BinaryCase{"BothEmpty", minus, {}, {}, {}, SubLeft},
                      BinaryCase{"LeftEmpty", minus, {}, {1}, {}, SubSizes},
                      BinaryCase{"RightEmpty", minus, {1}, {}, {}, SubSizes},
                      BinaryCase{"Infinities", minus, {Infinity}, {Infinity}, {NaN}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Multiply, BinaryOperatorsTest,
    ::testing::Values(BinaryCase{"VectorTimesScalar", multiply, {1, 2}, {2}, {2, 4}},
                      BinaryCase{"ScalarTimesVector", multiply, {2}, {1, 2, 3}, {2, 4, 6}},
                      BinaryCase{"Scalars", multiply, {2}, {3}, {6}},
                      BinaryCase{"Equal", multiply, {1, 2}, {3, 4}, {}, MultSizes},
                      BinaryCase{"Different", multiply, {1, 2, 3}, {3, 4}, {}, MultSizes},
                      BinaryCase{"BothEmpty", multiply, {}, {}, {}, MultLeft},
                      BinaryCase{"LeftEmpty", multiply, {}, {1}, {}, MultLeft},
                      BinaryCase{"RightEmpty", multiply, {1}, {}, {}, MultRight},
                      BinaryCase{"VectorAndEmpty", multiply, {1, 2}, {}, {}, MultRight},
                      BinaryCase{
                          "ZeroTimesInfinity", multiply, {0.0}, {Infinity, -1}, {NaN, -0.0}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Divide, BinaryOperatorsTest,
    ::testing::Values(BinaryCase{"VectorByScalar", divide, {1, 2}, {2}, {0.5, 1}},
                      BinaryCase{"Scalars", divide, {1}, {4}, {0.25}},
                      BinaryCase{"ScalarByVector", divide, {2}, {1, 2}, {}, DivSizes},
                      BinaryCase{"Equal", divide, {1, 2, 3}, {1, 2, 3}, {}, DivSizes},
                      BinaryCase{"BothEmpty", divide, {}, {}, {}, DivLeft},
                      BinaryCase{"LeftEmpty", divide, {}, {1}, {}, DivLeft},
                      BinaryCase{"RightEmpty", divide, {1}, {}, {}, DivRight},
                      BinaryCase{"ByZero", divide, {1, 2}, {0.0}, {}, DivZero},
                      BinaryCase{"ByNegativeZero", divide, {1, 2}, {-0.0}, {}, DivZero},
                      BinaryCase{"ByNotANumber", divide, {1, 2}, {NaN}, {NaN, NaN}},
                      // A division, not the product with a reciprocal.
                      BinaryCase{"ByThree", divide, {5}, {3}, {5.0 / 3.0}},
                      BinaryCase{"ByFortyNine", divide, {49}, {49}, {1}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Slice, BinaryOperatorsTest,
    ::testing::Values(
        BinaryCase{"OrderAndRepetition", slice, {10, 20, 30}, {2, 0, 0}, {30, 10, 10}},
        BinaryCase{"Truncated", slice, {10, 20, 30}, {0.9, 1.9, 2.999}, {10, 20, 30}},
        BinaryCase{"AboveMinusOne", slice, {10, 20}, {-0.5, -0.0, -0.999}, {10, 10, 10}},
        BinaryCase{"NoIndex", slice, {10, 20}, {}, {}},
        BinaryCase{"NoIndexAndNoData", slice, {}, {}, {}}),
    nameOf);

class OperatorTest : public GraphTest {
protected:
    static Handle<RecordingNode> node(double in_dValue = 1.0) {
        Handle<RecordingNode> pNode(new RecordingNode);
        pNode->m_vResult[0] = in_dValue;
        return pNode;
    }

    static Handle<RecordingNode> failing() {
        const auto pNode = node();
        pNode->m_bEvaluates = false;
        return pNode;
    }

    /// An operator whose arguments have these values.
    template <class Operator>
    static Handle<Operator> applied(const std::vector<Handle<Expression>>& in_vArguments) {
        Handle<Operator> pOperator(new Operator);
        for (std::size_t ui = 0; ui != in_vArguments.size(); ++ui) {
            pOperator->addArgument(("a" + std::to_string(ui)).c_str());
            if (!in_vArguments[ui].isNull()) {
                pOperator->getArgument(ui)->setValue(in_vArguments[ui]);
            }
        }
        pOperator->setSourceInfo("here");
        return pOperator;
    }

    static std::string noValue(const char* in_szName) {
        return logged(NodeLogger, "here:no value to compute from: " + std::string(in_szName));
    }
};

TEST_F(OperatorTest, NamesOfTheBinaryOperators) {
    const struct {
        Handle<BinaryOperatorImplNoT> m_pDefault;
        Handle<BinaryOperatorImplNoT> m_pNamed;
        const char* m_szName;
    } cases[] = {{new OperatorPlus, new OperatorPlus("n"), "add"},
                 {new OperatorMinus, new OperatorMinus("n"), "sub"},
                 {new OperatorMultiply, new OperatorMultiply("n"), "mult"},
                 {new OperatorDivide, new OperatorDivide("n"), "div"},
                 {new OperatorSlice, new OperatorSlice("n"), "Slice"}};
    for (const auto& testCase : cases) {
        EXPECT_STREQ(testCase.m_pDefault->getName(), testCase.m_szName);
        EXPECT_STREQ(testCase.m_pNamed->getName(), "n");
        EXPECT_STREQ(testCase.m_pNamed->createNew()->getName(), testCase.m_szName);
    }
}

TEST_F(OperatorTest, SliceOutOfRangeFailsAnAssertionAndKeepsWhatStoodBefore) {
    const DoubleVector vData{10.0, 20.0, 30.0};
    for (const double dIndex :
         {-1.0, -1.5, 3.0, 1e19, 9.3e18, 18446744073709551616.0, 1e300, Infinity, -Infinity, NaN}) {
        DoubleVector vResult{77.0};
        EXPECT_FALSE(slice(vData, DoubleVector{1.0, dIndex, 0.0}, vResult)) << dIndex;
        EXPECT_EQ(takeAssertions(), Texts{"uiIndex < in_Left.size()"});
        EXPECT_EQ(valuesOf(vResult), Values{20.0});
    }
}

TEST_F(OperatorTest, SliceOfNothingFailsAnAssertionWhateverTheIndex) {
    DoubleVector vEmpty;
    DoubleVector vCleared{42.0};
    vCleared.clear();
    for (const DoubleVector* pData : {&vEmpty, &vCleared}) {
        for (const double dIndex : {0.0, -0.0, -0.25, -0.999, 1.0}) {
            DoubleVector vResult;
            EXPECT_FALSE(slice(*pData, DoubleVector{dIndex}, vResult)) << dIndex;
            EXPECT_EQ(takeAssertions(), Texts{"uiIndex < in_Left.size()"});
            EXPECT_EQ(valuesOf(vResult), Values());
        }
    }
}

TEST_F(OperatorTest, OperatorsWorkInTheGraph) {
    const Handle<OperatorMultiply> pProduct(new OperatorMultiply);
    pProduct->getLeftArgument()->setValue(Handle<Expression>(constant({1.0, 2.0})));
    pProduct->getRightArgument()->setValue(Handle<Expression>(constant({2.0})));
    EXPECT_EQ(evaluated(*pProduct), (Values{2.0, 4.0}));
    pProduct->seal();
    pProduct->invalidate();
    EXPECT_EQ(evaluated(*pProduct), (Values{2.0, 4.0}));
}

TEST_F(OperatorTest, SteadyFramesOfASealedGraphAllocateNothing) {
    // [x, x] + ([if x then x / 2 else x * 3, x] - [x, x])[1, 0], on changing vectors
    const Handle<VariableImpl> pInput(new VariableImpl);
    Variable& input = *pInput;
    const DoubleVector vFirst{4.0};
    const DoubleVector vSecond{0.0};
    input.setValue(vFirst);
    const auto binary = [](auto* in_pOperator, const Handle<Expression>& in_pLeft,
                           const Handle<Expression>& in_pRight) {
        Handle<BinaryOperatorImplNoT> pOperator(in_pOperator);
        pOperator->getLeftArgument()->setValue(in_pLeft);
        pOperator->getRightArgument()->setValue(in_pRight);
        return Handle<Expression>(pOperator);
    };
    const Handle<Expression> pX(pInput);
    const Handle<Expression> pChoice(applied<OperatorIf>(
        {pX, binary(new OperatorDivide, pX, Handle<Expression>(constant({2.0}))),
         binary(new OperatorMultiply, pX, Handle<Expression>(constant({3.0})))}));
    const Handle<Expression> pPair(applied<OperatorConcatenate>({pX, pX}));
    const Handle<ExpressionBaseImpl> pRoot(binary(
        new OperatorPlus, pPair,
        binary(new OperatorSlice,
               binary(new OperatorMinus,
                      Handle<Expression>(applied<OperatorConcatenate>({pChoice, pX})), pPair),
               Handle<Expression>(constant({1.0, 0.0})))));
    for (const bool bSealed : {false, true}) {
        if (bSealed) {
            pRoot->seal();
        }
        LimitedObjPtr<DoubleVector> pValue;
        for (const DoubleVector* pFrame : {&vFirst, &vSecond}) {
            input.setValue(*pFrame);
            pRoot->evaluate(pValue);
        }
        const AllocationCounter counter;
        for (const DoubleVector* pFrame : {&vFirst, &vSecond, &vFirst}) {
            input.setValue(*pFrame);
            pRoot->evaluate(pValue);
        }
        const std::size_t uiAllocations = counter.allocations();
        EXPECT_EQ(uiAllocations, 0u);
        EXPECT_EQ(valuesOf(*pValue), (Values{4.0, 2.0}));
    }
}

TEST_F(OperatorTest, ConcatenationAppendsInOrder) {
    const auto pOne = constant({1.0});
    const auto pEmpty = constant({});
    const auto pTwo = constant({2.0, 3.0});
    EXPECT_EQ(evaluated(*applied<OperatorConcatenate>({pOne, pEmpty, pTwo})),
              (Values{1.0, 2.0, 3.0}));
    EXPECT_EQ(evaluated(*applied<OperatorConcatenate>({pEmpty, pTwo, pEmpty})), (Values{2.0, 3.0}));
    EXPECT_EQ(evaluated(*applied<OperatorConcatenate>({pTwo})), (Values{2.0, 3.0}));
    EXPECT_EQ(evaluated(*applied<OperatorConcatenate>({pEmpty})), Values());
    EXPECT_EQ(evaluated(*applied<OperatorConcatenate>({pTwo, pTwo})), (Values{2.0, 3.0, 2.0, 3.0}));
}

TEST_F(OperatorTest, ConcatenationStartsAnewOnEveryFrame) {
    const auto pConcatenation =
        applied<OperatorConcatenate>({constant({1.0, 2.0}), constant({3.0})});
    evaluated(*pConcatenation);
    pConcatenation->invalidate();
    EXPECT_EQ(evaluated(*pConcatenation), (Values{1.0, 2.0, 3.0}));
}

TEST_F(OperatorTest, ConcatenationStopsAtTheFirstFailureAndKeepsWhatStoodBefore) {
    const auto pFirst = node(1.0);
    const auto pSecond = failing();
    const auto pThird = node(3.0);
    const auto pConcatenation = applied<OperatorConcatenate>({pFirst, pSecond, pThird});
    std::vector<Handle<ExpressionBaseImpl>> vInputs{pFirst, pSecond, pThird};
    DoubleVector vResult{77.0};
    EXPECT_FALSE(pConcatenation->calculate(vInputs, vResult));
    EXPECT_EQ(valuesOf(vResult), Values{1.0});
    EXPECT_FALSE(pThird->isValid());
    pFirst->m_bEvaluates = false;
    pFirst->invalidate();
    vResult[0] = 77.0;
    EXPECT_FALSE(pConcatenation->calculate(vInputs, vResult));
    EXPECT_EQ(valuesOf(vResult), Values{77.0});
}

TEST_F(OperatorTest, ConcatenationBeyondTheLimitFails) {
    DoubleVector vHalf;
    vHalf.resize((std::size_t(1) << 23) + 1);
    const Handle<ExpressionBaseImpl> pHalf(new DomainValueNoCopyImpl(vHalf));
    const auto pConcatenation = applied<OperatorConcatenate>({pHalf, pHalf});
    pConcatenation->setSourceInfo("here");
    DoubleVector vResult;
    EXPECT_FALSE(pConcatenation->evaluate(vResult));
    EXPECT_EQ(takeErrors(),
              Texts{logged(OperatorLogger, "here:the concatenation has more elements than the "
                                           "limit of 16777216")});
}

TEST_F(OperatorTest, ConcatenationOfAValueThatNeverWasFails) {
    DoubleVector vResult;
    // The first argument copies its own value and names itself, a later one is read from here.
    const auto pFirst = applied<OperatorConcatenate>({failing(), node()});
    pFirst->getChildAt(0)->setSourceInfo("there");
    const std::string strFirst = pFirst->getChildAt(0)->getName();
    EXPECT_FALSE(pFirst->evaluate(vResult));
    EXPECT_EQ(takeErrors(),
              Texts{logged(NodeLogger, "there:no value to compute from: " + strFirst)});
    EXPECT_FALSE(applied<OperatorConcatenate>({node(), failing()})->evaluate(vResult));
    EXPECT_EQ(takeErrors(), Texts{noValue("unamed")});
}

TEST_F(OperatorTest, ConcatenationWithoutAnArgumentFails) {
    for (const bool bSealed : {false, true}) {
        const auto pConcatenation = applied<OperatorConcatenate>({});
        if (bSealed) {
            pConcatenation->seal();
        }
        DoubleVector vResult{5.0};
        EXPECT_FALSE(pConcatenation->evaluate(vResult));
        EXPECT_EQ(takeErrors(), Texts{noValue("unamed")});
        EXPECT_EQ(valuesOf(vResult), Values{5.0});
    }
}

TEST_F(OperatorTest, NullInputsAreRefusedLikeNullPointers) {
    const Handle<ExpressionBaseImpl> pNull;
    const Handle<ExpressionBaseImpl> pNode(node());
    const auto pConcatenation = applied<OperatorConcatenate>({});
    const auto pIf = applied<OperatorIf>({});
    DoubleVector vResult{5.0};
    for (auto vInputs : {std::vector<Handle<ExpressionBaseImpl>>{pNull, pNode},
                         std::vector<Handle<ExpressionBaseImpl>>{pNode, pNull}}) {
        EXPECT_FALSE(pConcatenation->calculate(vInputs, vResult));
        EXPECT_EQ(takeErrors(), Texts{noValue("unamed")});
    }
    vResult = DoubleVector{5.0};
    for (auto vInputs : {std::vector<Handle<ExpressionBaseImpl>>{pNull, pNode, pNode},
                         std::vector<Handle<ExpressionBaseImpl>>{pNode, pNull, pNode}}) {
        EXPECT_FALSE(pIf->calculate(vInputs, vResult));
        EXPECT_EQ(takeErrors(), Texts{noValue("if")});
        EXPECT_EQ(valuesOf(vResult), Values{5.0});
    }
}

TEST_F(OperatorTest, ConditionChoosesByItsFirstElement) {
    const struct {
        Values m_vCondition;
        double m_dExpected;
    } cases[] = {{{1.0}, 10.0},      {{0.0}, 20.0},      {{-0.0}, 20.0},
                 {{0.0, 1.0}, 20.0}, {{1.0, 0.0}, 10.0}, {{NaN}, 10.0},
                 {{-1.0}, 10.0},     {{1e-320}, 10.0},   {{Infinity}, 10.0}};
    for (const auto& testCase : cases) {
        const Handle<ConstantImpl> pCondition(new ConstantImpl(vectorOf(testCase.m_vCondition)));
        const auto pTrue = node(10.0);
        const auto pFalse = node(20.0);
        const auto pIf = applied<OperatorIf>({pCondition, pTrue, pFalse});
        EXPECT_EQ(evaluated(*pIf), Values{testCase.m_dExpected});
        EXPECT_EQ(pTrue->isValid(), testCase.m_dExpected == 10.0);
        EXPECT_EQ(pFalse->isValid(), testCase.m_dExpected == 20.0);
    }
}

TEST_F(OperatorTest, BranchNotTakenIsNotEvaluated) {
    const Handle<OperatorDivide> pByZero(new OperatorDivide);
    pByZero->getLeftArgument()->setValue(Handle<Expression>(constant({1.0})));
    pByZero->getRightArgument()->setValue(Handle<Expression>(constant({0.0})));
    EXPECT_EQ(evaluated(*applied<OperatorIf>({constant({1.0}), constant({5.0}), pByZero})),
              Values{5.0});
    EXPECT_EQ(evaluated(*applied<OperatorIf>({constant({0.0}), pByZero, constant({5.0})})),
              Values{5.0});
}

TEST_F(OperatorTest, FailingBranchMakesNoFailingIf) {
    const auto pBranch = node(1.0);
    const auto pIf = applied<OperatorIf>({constant({1.0}), pBranch, node()});
    pIf->seal();
    EXPECT_EQ(evaluated(*pIf), Values{1.0});
    pBranch->m_bEvaluates = false;
    pBranch->invalidate();
    EXPECT_FALSE(pIf->isValid());
    EXPECT_EQ(evaluated(*pIf), Values{1.0}) << "what the result held";
    EXPECT_TRUE(pIf->isValid());
}

TEST_F(OperatorTest, BranchThatNeverHadAValueMakesNoFailingIfAndIsReportedByItself) {
    const auto pIf = applied<OperatorIf>({constant({1.0}), failing(), node()});
    const std::string strBranch = pIf->getChildAt(1)->getName();
    EXPECT_EQ(evaluated(*pIf), Values());
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, ":no value to compute from: " + strBranch)});
}

TEST_F(OperatorTest, FailingConditionFailsTheIf) {
    std::vector<Handle<ExpressionBaseImpl>> vInputs{failing(), node(), node()};
    const auto pIf = applied<OperatorIf>({});
    DoubleVector vResult{5.0};
    EXPECT_FALSE(pIf->calculate(vInputs, vResult));
    EXPECT_EQ(valuesOf(vResult), Values{5.0});
    EXPECT_FALSE(vInputs[1]->isValid());
}

TEST_F(OperatorTest, ConditionWithoutAnElementOrAValueFails) {
    DoubleVector vResult;
    EXPECT_FALSE(applied<OperatorIf>({constant({}), node(), node()})->evaluate(vResult));
    EXPECT_EQ(takeErrors(), Texts{noValue("if")});
    EXPECT_FALSE(applied<OperatorIf>({failing(), node(), node()})->evaluate(vResult));
    EXPECT_EQ(takeErrors(), Texts{noValue("if")});
}

TEST_F(OperatorTest, IfOfFewerThanThreeArgumentsFailsAndEvaluatesNothing) {
    const auto pCondition = node();
    const std::vector<std::vector<Handle<Expression>>> vCases{
        {}, {pCondition}, {pCondition, node()}};
    for (const auto& vArguments : vCases) {
        const auto pIf = applied<OperatorIf>(vArguments);
        DoubleVector vResult;
        EXPECT_FALSE(pIf->evaluate(vResult));
        EXPECT_EQ(takeErrors(), Texts{noValue("if")});
        EXPECT_FALSE(pCondition->isValid());
    }
}

} // namespace

} // namespace Velmora::Math::Xpr
