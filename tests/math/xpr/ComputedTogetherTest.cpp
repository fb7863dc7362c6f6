// Functions of one class that a frame computes in one go.

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
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

using Testing::bind;
using Testing::evaluated;
using Testing::variable;
using Node = Handle<ExpressionBaseImpl>;
using Values = std::vector<double>;

/// A host's function: the first element and its own number.
class FunctionNumbered : public SingleVariableFunctionImpl,
                         public NoParamFunctionImpl,
                         public NoMemoryFunctionImpl {
public:
    FunctionNumbered() : SingleVariableFunctionImpl("numbered", "x"), m_iNumber(s_iNext++) {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        ++s_uiAlone;
        const DoubleVector* const pArgument = firstArgument(in_ArgNameToDomain);
        if (pArgument->empty() || m_iNumber == s_iFailing) {
            return false;
        }
        out.push_back(*pArgument->begin() + m_iNumber);
        return true;
    }

    static bool calculateTogether(FunctionNumbered* const* in_ppFunctions,
                                  std::size_t in_uiFunctions, const DoubleVector& in_vInput,
                                  DoubleVector* const* out_ppResults) {
        s_vTogether.push_back(in_uiFunctions);
        if (s_iFailing >= 0) {
            return false;
        }
        for (std::size_t i = 0; i != in_uiFunctions; ++i) {
            out_ppResults[i]->clear();
            out_ppResults[i]->push_back(*in_vInput.begin() + in_ppFunctions[i]->m_iNumber);
        }
        return true;
    }

    static void forget() {
        s_uiAlone = 0;
        s_vTogether.clear();
    }

    static int s_iNext;
    /// The number of the one that fails; none if negative.
    static int s_iFailing;
    static std::size_t s_uiAlone;
    static std::vector<std::size_t> s_vTogether;

private:
    int m_iNumber;
};

int FunctionNumbered::s_iNext = 0;
int FunctionNumbered::s_iFailing = -1;
std::size_t FunctionNumbered::s_uiAlone = 0;
std::vector<std::size_t> FunctionNumbered::s_vTogether;

/// Computes something else, but hasn't said how several of it are computed.
class FunctionDoubled : public FunctionNumbered {
public:
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        out.push_back(2 * *firstArgument(in_ArgNameToDomain)->begin());
        return true;
    }
};

/// Says so without ever throwing.
class FunctionQuiet : public FunctionNumbered {
public:
    static bool calculateTogether(FunctionQuiet* const*, std::size_t in_uiFunctions,
                                  const DoubleVector&, DoubleVector* const*) noexcept {
        s_vTogether.push_back(in_uiFunctions);
        return false;
    }
};

/// A node that computes something else than its function.
class NodeOfItsOwn : public UserFunctionImpl<FunctionNumbered> {
protected:
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        LimitedObjPtr<DoubleVector> pValue;
        if (!UserFunctionImpl::evaluate_i(pValue)) {
            return false;
        }
        m_vResult = DoubleVector{-*pValue->begin()};
        out = &m_vResult;
        return true;
    }

private:
    DoubleVector m_vResult;
};

/// A concatenation of some of these, all but the last of which read x.
class ComputedTogetherTest : public testing::Test {
protected:
    void SetUp() override {
        FunctionNumbered::s_iNext = 0;
        FunctionNumbered::s_iFailing = -1;
    }

    template <class F = FunctionNumbered, class N = UserFunctionImpl<F>>
    void make(std::size_t in_uiCount) {
        setInputs(m_vOne, m_vOne);
        std::vector<Node> vFunctions;
        for (std::size_t ui = 0; ui != in_uiCount; ++ui) {
            const Handle<N> pFunction(new N);
            bind(*pFunction, 0, Node(ui + 1 == in_uiCount ? m_pLast : m_pX));
            vFunctions.emplace_back(pFunction);
        }
        for (const Node& pFunction : vFunctions) {
            append(pFunction);
        }
        m_pTop->seal();
    }

    void append(const Node& in_pPart) {
        const std::size_t uiIndex = m_pTop->getArgumentCount();
        m_pTop->addArgument(std::to_string(uiIndex).c_str());
        bind(*m_pTop, uiIndex, in_pPart);
    }

    void setInputs(const DoubleVector& in_vX, const DoubleVector& in_vLast) {
        static_cast<Variable&>(*m_pX).setValue(in_vX);
        static_cast<Variable&>(*m_pLast).setValue(in_vLast);
    }

    /// Forgets how the functions were called before the last of several frames that are alike.
    Values computeFrames(const DoubleVector& in_vX, const DoubleVector& in_vLast) {
        Values vResult;
        for (int iFrame = 0; iFrame != 4; ++iFrame) {
            FunctionNumbered::forget();
            setInputs(in_vX, in_vLast);
            vResult = evaluated(*m_pTop);
        }
        return vResult;
    }

    const Handle<VariableImpl> m_pX = variable("x");
    const Handle<VariableImpl> m_pLast = variable("last");
    const Handle<OperatorConcatenate> m_pTop{new OperatorConcatenate};
    const DoubleVector m_vOne{10.0};
    const DoubleVector m_vTwo{20.0};
};

TEST_F(ComputedTogetherTest, FunctionsOfOneVectorAre) {
    make(4);
    EXPECT_EQ(computeFrames(m_vOne, m_vOne), (Values{10, 11, 12, 13}));
    EXPECT_EQ(FunctionNumbered::s_vTogether, (std::vector<std::size_t>{4}));
    EXPECT_EQ(FunctionNumbered::s_uiAlone, 0U);
}

TEST_F(ComputedTogetherTest, ManyAreInTurn) {
    make(19);
    const Values vResult = computeFrames(m_vTwo, m_vTwo);
    ASSERT_EQ(vResult.size(), 19U);
    for (std::size_t ui = 0; ui != 19; ++ui) {
        EXPECT_EQ(vResult[ui], 20.0 + static_cast<double>(ui));
    }
    EXPECT_EQ(FunctionNumbered::s_vTogether, (std::vector<std::size_t>{8, 8, 3}));
}

TEST_F(ComputedTogetherTest, FunctionsOfDifferentVectorsAreNot) {
    make(3);
    EXPECT_EQ(computeFrames(m_vOne, m_vTwo), (Values{10, 11, 22}));
    EXPECT_TRUE(FunctionNumbered::s_vTogether.empty());
    EXPECT_EQ(FunctionNumbered::s_uiAlone, 3U);
}

TEST_F(ComputedTogetherTest, FunctionsOfADerivedClassAreNot) {
    make<FunctionDoubled>(3);
    EXPECT_EQ(computeFrames(m_vOne, m_vOne), (Values{20, 20, 20}));
    EXPECT_TRUE(FunctionNumbered::s_vTogether.empty());
}

TEST_F(ComputedTogetherTest, NodesOfADerivedClassAreNot) {
    make<FunctionNumbered, NodeOfItsOwn>(3);
    EXPECT_EQ(computeFrames(m_vOne, m_vOne), (Values{-10, -11, -12}));
    EXPECT_TRUE(FunctionNumbered::s_vTogether.empty());
    EXPECT_EQ(FunctionNumbered::s_uiAlone, 3U);
}

TEST_F(ComputedTogetherTest, FunctionsThatThrowNothingAre) {
    make<FunctionQuiet>(3);
    EXPECT_EQ(computeFrames(m_vOne, m_vOne), (Values{10, 11, 12}));
    EXPECT_EQ(FunctionNumbered::s_vTogether, (std::vector<std::size_t>{3}));
    EXPECT_EQ(FunctionNumbered::s_uiAlone, 3U);
}

TEST_F(ComputedTogetherTest, OneThatFailsFailsAlone) {
    make(3);
    computeFrames(m_vOne, m_vOne);
    FunctionNumbered::s_iFailing = 1;
    FunctionNumbered::forget();
    setInputs(m_vTwo, m_vTwo);
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_FALSE(m_pTop->evaluate(pValue));
    EXPECT_EQ(FunctionNumbered::s_vTogether, (std::vector<std::size_t>{3}));
    const auto isValid = [&](std::size_t in_uiArgument) {
        return (*(*m_pTop->getChildBegin()[in_uiArgument]).getChildBegin())->isValid();
    };
    EXPECT_TRUE(isValid(0));
    EXPECT_FALSE(isValid(1));
    EXPECT_FALSE(isValid(2));
    FunctionNumbered::s_iFailing = -1;
    EXPECT_EQ(evaluated(*m_pTop), (Values{20, 21, 22}));
}

TEST_F(ComputedTogetherTest, ResultOfOneMayBeTheInput) {
    make(3);
    computeFrames(m_vOne, m_vOne);
    const Node pSecond = *(*m_pTop->getChildBegin()[1]).getChildBegin();
    LimitedObjPtr<DoubleVector> pValue;
    ASSERT_TRUE(pSecond->evaluate(pValue));
    setInputs(*pValue, *pValue);
    FunctionNumbered::forget();
    // It finds its input cleared, as it would alone.
    EXPECT_FALSE(m_pTop->evaluate(pValue));
    EXPECT_TRUE(FunctionNumbered::s_vTogether.empty());
    EXPECT_EQ(FunctionNumbered::s_uiAlone, 2U);
}

TEST_F(ComputedTogetherTest, OneThatWasEvaluatedOnTheWayIsNotComputedAgain) {
    const auto pHost = Testing::binary<Testing::RecordingBinary>(Node(m_pX), Node(m_pX));
    append(Node(pHost));
    make(3);
    Node pSecond = *(*m_pTop->getChildBegin()[2]).getChildBegin();
    pHost->m_OnCalculation = [&] {
        LimitedObjPtr<DoubleVector> pValue;
        EXPECT_TRUE(pSecond->evaluate(pValue));
    };
    EXPECT_EQ(computeFrames(m_vTwo, m_vTwo).size(), 5U);
    EXPECT_TRUE(FunctionNumbered::s_vTogether.empty());
    EXPECT_EQ(FunctionNumbered::s_uiAlone, 3U);
    pHost->m_OnCalculation = nullptr;
}

const std::vector<std::string> Inputs{"x", "y"};

std::string tone(int in_iFrequency, const std::string& in_strInput) {
    return "sinusCorrelate<8000, " + std::to_string(in_iFrequency) + ">(" + in_strInput + ')';
}

TEST(TonesTogetherTest, GiveTheBitsAndFlagsOfTheWalk) {
    std::vector<DoubleVector> vFrames(6);
    for (std::size_t uiFrame = 0; uiFrame != vFrames.size(); ++uiFrame) {
        // The last one is empty.
        vFrames[uiFrame].resize(uiFrame == 5 ? 0 : 37 + 11 * uiFrame);
        double dValue = 0.3;
        for (double& dEach : vFrames[uiFrame]) {
            dValue = 3.7 * dValue * (1.0 - dValue);
            dEach = dValue - 0.6;
        }
    }
    std::string strTones = tone(697, "x");
    for (const int iFrequency : {770, 852, 941, 1209, 1336, 1477, 1633, 2000, 3000}) {
        strTones += ", " + tone(iFrequency, iFrequency < 1500 ? "x" : "y");
    }
    const std::string strScript = "inputvar x\ninputvar y\nr = {" + strTones + ", sum(x)}\n" +
                                  "one = " + tone(852, "x") + " * 2\n";
    InputTwins twins(strScript, {"r", "one"}, Inputs);
    for (std::size_t uiFrame = 0; uiFrame != 40; ++uiFrame) {
        ASSERT_EQ(twins.set(0, vFrames[uiFrame / 5 % vFrames.size()]), "");
        if (uiFrame % 7 < 5) {
            ASSERT_EQ(twins.set(1, vFrames[uiFrame / 3 % vFrames.size()]), "");
        }
        ASSERT_EQ(twins.evaluate(uiFrame % 4 == 3 ? 1 : 0), "") << uiFrame;
        ASSERT_EQ(twins.evaluate(0), "") << uiFrame;
    }
}

TEST(TonesTogetherTest, NothingAllocatesBehindTheFirstFrame) {
    InputFeature feature({"x", "y", "z"}, '{' + tone(697, "x") + ", " + tone(770, "x") + ", " +
                                              tone(852, "x") + ", " + tone(941, "y") + ", z}");
    const DoubleVector vOne{1.0, 2.0, 3.0}, vOther{4.0, 2.0, 1.0};
    expectNoAllocations(feature, vOne, vOther, vOther, vOne);
}

} // namespace
