#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/Optimizer.h>

#include "support/AllocationCounter.h"
#include "support/AssertionCapture.h"
#include "support/GraphInvariants.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {

namespace {

using Testing::AllocationCounter;
using Testing::checkInvariants;
using Testing::checkLinked;
using Testing::Evaluations;
using Testing::LinkBench;
using Testing::MemoryFileSystem;
using Testing::scriptsIn;

/// A detector over several scripts, with memory across frames and calls that can be shared.
const MemoryFileSystem::Files& detectorScripts() {
    static const MemoryFileSystem::Files s_files{
        {"scripts/detector.xpr", "inputvar frame\n"
                                 "inputvar reference\n"
                                 "smooth<n>(x, y) = sum(slidingWindow<n>(x)) / n.size + y\n"
                                 "level = power.of(frame, reference)\n"
                                 "history = slidingWindow<3>(level)\n"
                                 "rising = isGreater(sum(delta(level)), 0)\n"
                                 "detector = if(isGreater(level, power.limit), {level, rising}, "
                                 "{level, 0 - 1})\n"
                                 "again = {sum(history), smooth<3>(level, 0) * n.size}\n"},
        {"scripts/power.xpr", "limit = 2\n"
                              "of(x, y) = averagePower(x) - averagePower(y) * scale\n"
                              "scale = 0.5\n"},
        {"scripts/n.xpr", "size = 3\n"}};
    return s_files;
}

std::string textOf(const Handle<Expression>& in_pExpression) {
    DoubleVector vValue;
    if (in_pExpression.isNull() || !in_pExpression->evaluate(vValue)) {
        return "none";
    }
    std::ostringstream text;
    text << vValue;
    return text.str();
}

struct Frame {
    std::vector<double> m_vFrame;
    std::vector<double> m_vReference;
    const char* m_szDetector;
    const char* m_szHistory;
    const char* m_szAgain;
};

// averagePower(frame) - averagePower(reference) / 2, and what follows from it.
const std::vector<Frame>& frames() {
    static const std::vector<Frame> s_vFrames{{{2, 2}, {2}, "[2 1]", "[2]", "[2 2]"},
                                              {{3, 1}, {0}, "[5 1]", "[2 5]", "[7 7]"},
                                              {{1}, {2, 0}, "[0 -1]", "[2 5 0]", "[7 7]"},
                                              {{4}, {2, 2}, "[14 1]", "[5 0 14]", "[19 19]"},
                                              {{2}, {0, 0}, "[4 0]", "[0 14 4]", "[18 18]"}};
    return s_vFrames;
}

DoubleVector vectorOf(const std::vector<double>& in_vValues) {
    DoubleVector vVector;
    for (const double dValue : in_vValues) {
        vVector.push_back(dValue);
    }
    return vVector;
}

class PipelineTest : public ::testing::TestWithParam<bool> {
protected:
    PipelineTest() : m_Log(std::string(), log4cplus::ERROR_LOG_LEVEL) {}

    std::unique_ptr<Evaluator> newEvaluator(const MemoryFileSystem::Files& in_mapFiles) {
        auto pEvaluator = std::make_unique<Evaluator>();
        EXPECT_TRUE(pEvaluator->configure(
            scriptsIn("scripts"), TSHandle<VirtualFileSystem>(new MemoryFileSystem(in_mapFiles))));
        return pEvaluator;
    }

    std::unique_ptr<Evaluator> newDetector() {
        auto pEvaluator = newEvaluator(detectorScripts());
        EXPECT_TRUE(pEvaluator->addScript("detector"));
        EXPECT_TRUE(pEvaluator->link(GetParam()));
        EXPECT_TRUE(pEvaluator->reconfigureExpressions());
        return pEvaluator;
    }

    /// Feeds all frames and checks each value.
    static void expectFrames(Evaluator& inout_Evaluator) {
        DoubleVector vFrame, vReference;
        for (const Frame& frame : frames()) {
            vFrame = vectorOf(frame.m_vFrame);
            vReference = vectorOf(frame.m_vReference);
            ASSERT_TRUE(inout_Evaluator.getVariable("detector.frame")->setValue(vFrame));
            ASSERT_TRUE(inout_Evaluator.getVariable("detector.reference")->setValue(vReference));
            EXPECT_EQ(textOf(inout_Evaluator.getExpression("detector.detector")),
                      frame.m_szDetector);
            EXPECT_EQ(textOf(inout_Evaluator.getExpression("detector.history")), frame.m_szHistory);
            EXPECT_EQ(textOf(inout_Evaluator.getExpression("detector.again")), frame.m_szAgain);
            // A second look at the same frame doesn't count it again.
            EXPECT_EQ(textOf(inout_Evaluator.getExpression("detector.history")), frame.m_szHistory);
        }
    }

    AssertionCapture m_Assertions;
    LogCapture m_Log;
};

INSTANTIATE_TEST_SUITE_P(Linked, PipelineTest, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Optimized, PipelineTest, ::testing::Values(true));

TEST_P(PipelineTest, AScriptComputesItsFeaturesFrameByFrame) {
    const auto pEvaluator = newDetector();
    expectFrames(*pEvaluator);
    EXPECT_EQ(m_Log.count(log4cplus::ERROR_LOG_LEVEL), 0u);
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_P(PipelineTest, ACloneOfAFreshEvaluatorComputesTheSame) {
    const auto pSource = newDetector();
    Evaluator copy(*pSource);
    ASSERT_TRUE(copy.reconfigureExpressions());
    expectFrames(copy);
    expectFrames(*pSource);
}

TEST_P(PipelineTest, ResetStartsTheMemoryAgain) {
    const auto pEvaluator = newDetector();
    expectFrames(*pEvaluator);
    for (const char* szName : {"detector.detector", "detector.history", "detector.again"}) {
        EXPECT_TRUE(pEvaluator->getExpression(szName)->reset());
    }
    expectFrames(*pEvaluator);
}

TEST_P(PipelineTest, ASteadyFrameAllocatesNothing) {
    const auto pEvaluator = newDetector();
    expectFrames(*pEvaluator);
    const Handle<Variable> pFrame(pEvaluator->getVariable("detector.frame"));
    const Handle<Variable> pReference(pEvaluator->getVariable("detector.reference"));
    const Handle<Expression> pDetector(pEvaluator->getExpression("detector.detector"));
    const Handle<Expression> pAgain(pEvaluator->getExpression("detector.again"));
    DoubleVector vFrame(std::initializer_list<double>{1, 2, 3});
    const DoubleVector vReference{1};
    DoubleVector vResult(std::initializer_list<double>{0, 0, 0, 0});
    std::size_t uiAllocations = 0;
    for (int iFrame = 0; iFrame != 20; ++iFrame) {
        const AllocationCounter counter;
        vFrame[0] = iFrame;
        pFrame->setValue(vFrame);
        pReference->setValue(vReference);
        pDetector->evaluate(vResult);
        pAgain->evaluate(vResult);
        // The first frames of a new size may grow what they write into.
        uiAllocations += iFrame < 5 ? 0 : counter.allocations();
    }
    EXPECT_EQ(uiAllocations, 0u);
}

TEST_P(PipelineTest, TenThousandDefinitionsGoThroughEveryStage) {
    constexpr int Count = 10000;
    std::string strScript;
    for (int i = Count - 1; i != 0; --i) {
        strScript += "v" + std::to_string(i) + " = v" + std::to_string(i - 1) + " + one\n";
    }
    strScript += "inputvar v0\none = 1\n";
    const auto pEvaluator = newEvaluator({{"scripts/deep.xpr", strScript}});
    ASSERT_TRUE(pEvaluator->addScript("deep"));
    ASSERT_TRUE(pEvaluator->link(GetParam()));
    ASSERT_TRUE(pEvaluator->reconfigureExpressions());
    Evaluator copy(*pEvaluator);
    const std::string strLast = "deep.v" + std::to_string(Count - 1);
    DoubleVector vInput;
    for (const double dInput : {0.0, 5.0}) {
        vInput = DoubleVector{dInput};
        for (Evaluator* pEach : {pEvaluator.get(), &copy}) {
            ASSERT_TRUE(pEach->getVariable("deep.v0")->setValue(vInput));
            const Handle<Expression> pLast(pEach->getExpression(strLast.c_str()));
            std::ostringstream expected;
            expected << DoubleVector{dInput + Count - 1};
            EXPECT_EQ(textOf(pLast), expected.str());
        }
    }
    EXPECT_TRUE(checkInvariants(pEvaluator->getExpression(strLast.c_str())));
    EXPECT_TRUE(pEvaluator->getExpression(strLast.c_str())->reset());
}

TEST_F(PipelineTest, EveryStageHoldsTheInvariants) {
    LinkBench bench;
    for (const auto& [strPath, strText] : detectorScripts()) {
        bench.files().setFile(strPath, strText);
    }
    ASSERT_TRUE(bench.load("detector", detectorScripts().at("scripts/detector.xpr")));
    EXPECT_TRUE(checkInvariants(bench.m_Raw));
    EXPECT_FALSE(checkLinked(bench.m_Raw));
    const Dictionnary rawCopy(bench.m_Raw, "copy", true);
    EXPECT_TRUE(checkInvariants(rawCopy));

    ASSERT_TRUE(bench.link());
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
    EXPECT_TRUE(checkLinked(bench.m_Linked));
    const Dictionnary linkedCopy(bench.m_Linked, "copy", true);
    EXPECT_TRUE(checkInvariants(linkedCopy));
    EXPECT_TRUE(checkInvariants(bench.m_Linked));

    Optimizer optimizer;
    Dictionnary optimized("optimized");
    ASSERT_TRUE(optimizer.run(bench.m_Linked, optimized));
    EXPECT_TRUE(checkInvariants(optimized));
    const Dictionnary optimizedCopy(optimized, "copy", true);
    EXPECT_TRUE(checkInvariants(optimizedCopy));

    DoubleVector vFrame;
    for (const Frame& frame : frames()) {
        vFrame = vectorOf(frame.m_vFrame);
        ASSERT_TRUE(optimized.findVariable("detector.frame")->setValue(vFrame));
        for (auto iteEntry = optimized.begin(); iteEntry != optimized.end(); ++iteEntry) {
            DoubleVector vValue;
            iteEntry->second->evaluate(vValue);
        }
        EXPECT_TRUE(checkInvariants(optimized, Evaluations::MayHaveFailed));
    }
}

} // namespace
} // namespace Velmora::Math::Xpr
