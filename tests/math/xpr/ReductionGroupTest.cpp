// Functions that a frame leaves to one pass over their vector.

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/SingleParameterFunctionImpl.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/InputTwins.h"
#include "math/xpr/OptimizerGraphs.h"
#include "support/GraphTest.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

using Testing::argument;
using Testing::bind;
using Testing::constant;
using Testing::evaluated;
using Testing::variable;
using Node = Handle<ExpressionBaseImpl>;
using Values = std::vector<double>;

/// A host's function that is a sum, and tells how often it computed itself.
class FunctionTotal : public SingleVariableFunctionImpl,
                      public NoParamFunctionImpl,
                      public NoMemoryFunctionImpl {
public:
    FunctionTotal() : SingleVariableFunctionImpl("total", "x") {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        ++s_uiCalls;
        double dTotal = 0.0;
        for (const double dValue : *firstArgument(in_ArgNameToDomain)) {
            dTotal += dValue;
        }
        out.push_back(dTotal);
        return true;
    }

    static Reductions::Kind reductionOf(const FunctionTotal&) { return Reductions::Kind::Sum; }

    static std::size_t s_uiCalls;
};

std::size_t FunctionTotal::s_uiCalls = 0;

/// Computes something else, and hasn't said that it reduces.
class FunctionDoubled : public FunctionTotal {
public:
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const bool bCalculated = FunctionTotal::calculate(in_ArgNameToDomain, out);
        out[0] *= 2.0;
        return bCalculated;
    }
};

/// Makes its argument longer where it computes itself, which it shouldn't.
class FunctionPadding : public FunctionTotal {
public:
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        in_ArgNameToDomain.begin()->second->resize(1000);
        return FunctionTotal::calculate(in_ArgNameToDomain, out);
    }

    static Reductions::Kind reductionOf(const FunctionPadding&) { return Reductions::Kind::Sum; }
};

/// Says so without ever throwing.
class FunctionQuiet : public FunctionTotal {
public:
    static Reductions::Kind reductionOf(const FunctionQuiet&) noexcept {
        return Reductions::Kind::Sum;
    }
};

/// A sum until it is configured, and a maximum from then on.
class FunctionSumOrMax : public SingleVariableFunctionImpl,
                         public SingleParameterFunctionImpl,
                         public NoMemoryFunctionImpl {
public:
    FunctionSumOrMax()
        : SingleVariableFunctionImpl("sumOrMax", "x"), SingleParameterFunctionImpl("max") {}

    bool configure(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) override {
        m_bMax = true;
        return true;
    }

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector& vX = *firstArgument(in_ArgNameToDomain);
        out.push_back(m_bMax ? *std::max_element(vX.begin(), vX.end())
                             : std::accumulate(vX.begin(), vX.end(), 0.0));
        return true;
    }

    static Reductions::Kind reductionOf(const FunctionSumOrMax& in_Function) {
        return in_Function.m_bMax ? Reductions::Kind::Max : Reductions::Kind::Sum;
    }

private:
    bool m_bMax = false;
};

/// Sets an input where it computes itself.
class FunctionDisturbing : public FunctionTotal {
public:
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        if (s_pInput != nullptr) {
            s_pInput->setValue(*s_pValue);
        }
        return FunctionTotal::calculate(in_ArgNameToDomain, out);
    }

    static Reductions::Kind reductionOf(const FunctionDisturbing&) { return Reductions::Kind::Sum; }

    static Variable* s_pInput;
    static const DoubleVector* s_pValue;
};

Variable* FunctionDisturbing::s_pInput = nullptr;
const DoubleVector* FunctionDisturbing::s_pValue = nullptr;

/// A node that computes something else.
class NodeDoubled : public UserFunctionImpl<FunctionTotal> {
protected:
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        const bool bEvaluated = UserFunctionImpl::evaluate_i(out);
        (*out)[0] *= 2.0;
        return bEvaluated;
    }
};

/// A concatenation of nodes that read x.
class ReductionGroupTest : public testing::Test {
protected:
    void SetUp() override { static_cast<Variable&>(*m_pX).setValue(m_vOne); }

    template <class N>
    void append() {
        append<N>(m_pX);
    }

    template <class N>
    void append(const Handle<VariableImpl>& in_pInput) {
        const Handle<N> pNode(new N);
        bind(*pNode, 0, Node(in_pInput));
        const std::size_t uiIndex = m_pTop->getArgumentCount();
        m_pTop->addArgument(std::to_string(uiIndex).c_str());
        bind(*m_pTop, uiIndex, Node(pNode));
    }

    Values computeFrame(const DoubleVector& in_vX) {
        FunctionTotal::s_uiCalls = 0;
        static_cast<Variable&>(*m_pX).setValue(in_vX);
        return evaluated(*m_pTop);
    }

    Values computeFrames(const DoubleVector& in_vX) {
        for (int iFrame = 0; iFrame != 4; ++iFrame) {
            computeFrame(in_vX);
        }
        return computeFrame(in_vX);
    }

    const Handle<VariableImpl> m_pX = variable("x");
    const Handle<OperatorConcatenate> m_pTop{new OperatorConcatenate};
    const DoubleVector m_vOne{1.0, 2.0};
    const DoubleVector m_vTwo{3.0, 4.0, 5.0};
    const DoubleVector m_vNone;
};

TEST_F(ReductionGroupTest, FunctionsThatSaySoAreLeftToTheReduction) {
    append<UserFunctionImpl<FunctionTotal>>();
    append<UserFunctionImpl<FunctionTotal>>();
    m_pTop->seal();
    EXPECT_EQ(computeFrame(m_vOne), (Values{3, 3}));
    EXPECT_EQ(FunctionTotal::s_uiCalls, 2U);
    EXPECT_EQ(computeFrames(m_vTwo), (Values{12, 12}));
    EXPECT_EQ(FunctionTotal::s_uiCalls, 0U);
}

TEST_F(ReductionGroupTest, VectorsWithoutElementsAreLeftToTheFunction) {
    append<UserFunctionImpl<FunctionTotal>>();
    m_pTop->seal();
    computeFrames(m_vTwo);
    EXPECT_EQ(computeFrames(m_vNone), (Values{0}));
    EXPECT_EQ(FunctionTotal::s_uiCalls, 1U);
    EXPECT_EQ(computeFrames(m_vOne), (Values{3}));
    EXPECT_EQ(FunctionTotal::s_uiCalls, 0U);
}

TEST_F(ReductionGroupTest, DerivedFunctionsComputeThemselves) {
    append<UserFunctionImpl<FunctionDoubled>>();
    m_pTop->seal();
    EXPECT_EQ(computeFrames(m_vTwo), (Values{24}));
    EXPECT_EQ(FunctionTotal::s_uiCalls, 1U);
}

TEST_F(ReductionGroupTest, FunctionsThatThrowNothingMaySaySoToo) {
    append<UserFunctionImpl<FunctionQuiet>>();
    m_pTop->seal();
    EXPECT_EQ(computeFrames(m_vTwo), (Values{12}));
    EXPECT_EQ(FunctionTotal::s_uiCalls, 0U);
}

TEST_F(ReductionGroupTest, ArgumentThatAFunctionMakesLongerIsComputedAnew) {
    const Node pDouble(Testing::binary<OperatorMultiply>(Node(m_pX), Node(constant({2.0}))));
    const Node pLonger(Testing::binary<OperatorMultiply>(pDouble, Node(constant({3.0}))));
    const Handle<UserFunctionImpl<FunctionPadding>> pPadding(new UserFunctionImpl<FunctionPadding>);
    bind(*pPadding, 0, pDouble);
    Testing::bindAll(*m_pTop, {Node(pPadding), pLonger});
    m_pTop->seal();
    const DoubleVector vFour{4.0}, vFive{5.0};
    EXPECT_EQ(computeFrame(vFour).size(), 1001U);
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        EXPECT_EQ(computeFrame(vFive), (Values{10, 30}));
        EXPECT_EQ(computeFrame(vFour), (Values{8, 24}));
    }
}

TEST_F(ReductionGroupTest, FunctionsWithParametersAreAskedInEachFrame) {
    append<UserFunctionImpl<FunctionSumOrMax>>();
    m_pTop->seal();
    EXPECT_EQ(computeFrames(m_vTwo), (Values{12}));
    const auto& function = static_cast<const Function&>(
        *Handle<FunctionBaseImpl>(Node(argument(*m_pTop, 0)->getValue())));
    ASSERT_TRUE(function.getParameter("max")->setValue(ParameterValue(1)));
    ASSERT_TRUE(m_pTop->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(computeFrames(m_vTwo), (Values{5}));
}

TEST_F(ReductionGroupTest, FunctionThatSetsAnInputIsHeardByThoseBehindIt) {
    const Handle<VariableImpl> pY = variable("y");
    Variable& y = *pY;
    y.setValue(m_vOne);
    append<UserFunctionImpl<FunctionDisturbing>>();
    append<UserFunctionImpl<FunctionTotal>>(pY);
    m_pTop->seal();
    EXPECT_EQ(computeFrames(m_vOne), (Values{3, 3}));
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        y.setValue(m_vOne);
        EXPECT_EQ(computeFrame(m_vTwo), (Values{12, 3}));
    }
    FunctionDisturbing::s_pInput = &y;
    FunctionDisturbing::s_pValue = &m_vTwo;
    y.setValue(m_vOne);
    EXPECT_EQ(computeFrame(m_vNone), (Values{0, 12}));
    FunctionDisturbing::s_pInput = nullptr;
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        y.setValue(m_vOne);
        EXPECT_EQ(computeFrame(m_vTwo), (Values{12, 3}));
    }
}

TEST_F(ReductionGroupTest, NodesOfDerivedClassesComputeThemselves) {
    append<NodeDoubled>();
    m_pTop->seal();
    EXPECT_EQ(computeFrames(m_vTwo), (Values{24}));
    EXPECT_EQ(FunctionTotal::s_uiCalls, 1U);
}

const std::vector<std::string> Inputs{"x", "y"};

std::string scriptOf(const std::string& in_strFeatures) {
    return "inputvar x\ninputvar y\n" + in_strFeatures + '\n';
}

std::vector<DoubleVector> makeFrames() {
    std::vector<DoubleVector> vFrames(7);
    double dValue = 0.3;
    for (std::size_t uiFrame = 0; uiFrame != vFrames.size(); ++uiFrame) {
        // Among them none, one, fewer and more than the registers hold.
        vFrames[uiFrame].resize(uiFrame * uiFrame * uiFrame * uiFrame);
        for (double& dEach : vFrames[uiFrame]) {
            dValue = 3.7 * dValue * (1.0 - dValue);
            dEach = dValue - 0.6;
        }
    }
    return vFrames;
}

TEST(ReductionsOfScriptsTest, GiveTheBitsFlagsAndErrorsOfTheWalk) {
    const std::vector<DoubleVector> vFrames = makeFrames();
    const std::vector<std::string> vScripts{
        "r = {sum(x), max(x), averagePower(x), min(x)}\nf = max(x) * 2",
        "r = {max(y), sum(x), min(x), max(x), averagePower(y)}\nf = y * sum(x)",
        "t = x * 2\nr = {sum(t), max(t), log(y), averagePower(t)}\nf = max(t) + sum(y)",
        "r = {min(x), sum(min(x)), max(sum(x)), sum(x * max(x))}\nf = sum(x)",
        "u = x\nv = u\nr = sum(u) + max(v) - min(x) * averagePower(v)\nf = max(u)"};
    for (const std::string& strScript : vScripts) {
        InputTwins twins(scriptOf(strScript), {"r", "f"}, Inputs);
        for (std::size_t uiFrame = 0; uiFrame != 200; ++uiFrame) {
            SCOPED_TRACE(strScript + ' ' + std::to_string(uiFrame));
            ASSERT_EQ(twins.set(0, vFrames[uiFrame / 5 % vFrames.size()]), "");
            if (uiFrame % 7 < 5) {
                ASSERT_EQ(twins.set(1, vFrames[uiFrame / 3 % vFrames.size()]), "");
            }
            ASSERT_EQ(twins.evaluate(uiFrame % 4 == 3 ? 1 : 0), "");
            ASSERT_EQ(twins.evaluate(0), "");
        }
    }
}

TEST(ReductionsOfScriptsTest, AnyResultMayBeSetAsAnInput) {
    const std::string strScript = scriptOf("r = {sum(x), max(x), averagePower(x), min(y), sum(y)}");
    const std::vector<DoubleVector> vFrames = makeFrames();
    const std::size_t uiNodes = InputTwins(strScript, {"r"}, Inputs).getNodeCount();
    // But for that of the concatenation itself, which is the feature's too.
    for (std::size_t uiNode = 2; uiNode != uiNodes; ++uiNode) {
        SCOPED_TRACE(uiNode);
        InputTwins twins(strScript, {"r"}, Inputs);
        ASSERT_EQ(twins.set(0, vFrames[2]) + twins.set(1, vFrames[3]), "");
        for (std::size_t uiFrame = 0; uiFrame != 12; ++uiFrame) {
            ASSERT_EQ(twins.evaluate(0), "");
            ASSERT_EQ(twins.setResult(uiFrame % 2, uiNode), "");
            ASSERT_EQ(twins.evaluate(0), "");
            ASSERT_EQ(twins.set(uiFrame % 2, vFrames[1 + uiFrame % 4]), "");
        }
    }
}

// The sum of nothing is computed, and its maximum isn't.
TEST(ReductionsOfScriptsTest, OneThatFailedHasNoNumberToWriteOver) {
    InputTwins twins("inputvar x\nlargest = max(x)\ntotal = sum(x)\n", {"largest", "total"}, {"x"});
    // Behind the features, whose values they are.
    constexpr std::size_t Largest = 2, Total = 3;
    const DoubleVector vPair{10.0, 20.0}, vNone;
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        EXPECT_EQ(twins.set(0, vPair), "");
        EXPECT_EQ(twins.evaluate(Largest), "");
        EXPECT_EQ(twins.evaluate(Total), "");
    }
    EXPECT_EQ(twins.set(0, vNone), "");
    EXPECT_EQ(twins.evaluate(Largest), "");
    for (int iFrame = 0; iFrame != 6; ++iFrame) {
        EXPECT_EQ(twins.set(0, vPair), "");
        EXPECT_EQ(twins.evaluate(Total), "");
    }
    for (int iFrame = 0; iFrame != 3; ++iFrame) {
        EXPECT_EQ(twins.set(0, vPair), "");
        EXPECT_EQ(twins.evaluate(Largest), "");
    }
}

TEST(ReductionsOfScriptsTest, FailureIsThatOfTheWalk) {
    const DoubleVector vNone, vPair{10.0, 20.0};
    InputTwins twins(scriptOf("r = {sum(x), max(x), sum(y)}\nf = max(x)"), {"r", "f"}, Inputs);
    ASSERT_EQ(twins.set(1, vPair), "");
    for (int iFrame = 0; iFrame != 24; ++iFrame) {
        ASSERT_EQ(twins.set(0, iFrame % 8 == 7 ? vNone : vPair), "") << iFrame;
        ASSERT_EQ(twins.evaluate(iFrame < 12 ? 0 : 1), "") << iFrame;
        ASSERT_EQ(twins.evaluate(0), "") << iFrame;
    }
}

TEST(ReductionsOfScriptsTest, NothingAllocatesBehindTheFirstFrame) {
    InputFeature feature({"x", "y", "z"}, "{sum(x), max(x), averagePower(y), sum(x + y) * z}");
    const DoubleVector vOne{1.0, 2.0, 3.0}, vOther{4.0, 2.0, 1.0}, vNumber{2.0};
    expectNoAllocations(feature, vOne, vOther, vOther, vNumber);
}

} // namespace
