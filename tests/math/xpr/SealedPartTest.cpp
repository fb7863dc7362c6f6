#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include <tuple>

#include "support/GraphTest.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class SealedPartTest : public GraphTest {
protected:
    template <class Operator>
    static Handle<Operator> operation(const Handle<Expression>& in_pLeft,
                                      const Handle<Expression>& in_pRight) {
        const Handle<Operator> pOperator(new Operator);
        pOperator->getLeftArgument()->setValue(in_pLeft);
        pOperator->getRightArgument()->setValue(in_pRight);
        return pOperator;
    }

    using Outcome = std::tuple<bool, Texts, Values>;

    /// What an operator gives on frames with and without elements, of an input with itself or with
    /// a constant.
    template <class Operator>
    std::vector<Outcome> run(bool in_bTwice, bool in_bSealed) {
        const std::vector<DoubleVector> vFrames{
            DoubleVector{1.0},      DoubleVector(), DoubleVector{2.0}, DoubleVector(),
            DoubleVector{1.0, 2.0}, DoubleVector(), DoubleVector()};
        const Handle<DomainVariableImpl> pInput(new DomainVariableImpl);
        Variable& input = *pInput;
        input.setValue(vFrames.front());
        const Handle<Expression> pLeft(pInput);
        const Handle<Expression> pTwo(constant({2.0}));
        const auto pOperator = operation<Operator>(pLeft, in_bTwice ? pLeft : pTwo);
        if (in_bSealed) {
            pOperator->seal();
        }
        std::vector<Outcome> vOutcomes;
        for (const DoubleVector& vFrame : vFrames) {
            input.setValue(vFrame);
            DoubleVector vResult;
            const bool bGood = pOperator->evaluate(vResult);
            vOutcomes.emplace_back(bGood, takeErrors(), valuesOf(vResult));
        }
        return vOutcomes;
    }

    template <class Operator>
    void expectTheSameWhenSealed() {
        for (const bool bTwice : {false, true}) {
            const auto vPlain = run<Operator>(bTwice, false);
            EXPECT_EQ(std::get<bool>(vPlain[1]), false);
            EXPECT_EQ(std::get<Texts>(vPlain[1]).size(), 1u);
            EXPECT_EQ(run<Operator>(bTwice, true), vPlain);
        }
    }
};

TEST_F(SealedPartTest, ParentOutsideOfTheSealedGraphHearsOfEachChange) {
    const Handle<DomainVariableImpl> pInput(new DomainVariableImpl);
    Variable& input = *pInput;
    const DoubleVector vFirst{1.0};
    input.setValue(vFirst);
    const Handle<Expression> pTwo(constant({2.0}));
    const auto pSealed = operation<OperatorPlus>(Handle<Expression>(pInput), pTwo);
    const auto pOutside = operation<OperatorMultiply>(Handle<Expression>(pInput), pTwo);
    pSealed->seal();
    std::vector<DoubleVector> vFrames{DoubleVector{3.0}, DoubleVector{4.0}, DoubleVector{5.0}};
    for (const DoubleVector& vFrame : vFrames) {
        input.setValue(vFrame);
        const double dValue = vFrame[0];
        EXPECT_EQ(evaluated(*pSealed), Values{dValue + 2.0});
        EXPECT_EQ(evaluated(*pOutside), Values{dValue * 2.0});
    }
}

TEST_F(SealedPartTest, SidesWithoutElementsAreRefusedInTheSameWordsWhenSealed) {
    expectTheSameWhenSealed<OperatorPlus>();
    expectTheSameWhenSealed<OperatorMinus>();
    expectTheSameWhenSealed<OperatorMultiply>();
    expectTheSameWhenSealed<OperatorDivide>();
}

} // namespace

} // namespace Velmora::Math::Xpr
