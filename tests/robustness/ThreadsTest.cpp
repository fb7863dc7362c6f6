// Clones of one evaluator on eight threads, while a ninth loads and links other scripts: each
// computes what it would compute alone, whoever starts, ends and dies first.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/Variable.h>

#include "robustness/ScriptFiles.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

namespace {

using Math::DoubleVector;
using namespace Math::Xpr;

constexpr std::size_t Threads = 8;
constexpr std::size_t Rounds = 6;
constexpr std::size_t Frames = 40;

const std::map<std::string, std::string>& scripts() {
    static const std::map<std::string, std::string> s_mapTexts{
        {"./s.xpr", "inputvar x\n"
                    "smooth<n>(a) = sum(slidingWindow<n>(a)) / other.size\n"
                    "y = if(isGreater(x, 3), smooth<4>(x), {x, x * 2}[1]) + smooth<4>(x)\n"},
        {"./other.xpr", "size = 4\n"},
        {"./t.xpr", "inputvar a\nb = {a, max(a), other.size}\nc = delta(b) + unknown.name\n"}};
    return s_mapTexts;
}

std::unique_ptr<Evaluator> newEvaluator(const char* in_szScript) {
    auto pEvaluator = std::make_unique<Evaluator>();
    EXPECT_TRUE(pEvaluator->configure(scriptsIn("."),
                                      TSHandle<VirtualFileSystem>(new ScriptFiles(scripts()))));
    EXPECT_TRUE(pEvaluator->addScript(in_szScript));
    return pEvaluator;
}

/// The sum of what the frames give; not a number if one fails.
double compute(Evaluator& inout_Evaluator, std::size_t in_uiSeed, std::size_t in_uiFrames) {
    const Handle<Variable> pX = inout_Evaluator.getVariable("s.x");
    const Handle<Expression> pY = inout_Evaluator.getExpression("s.y");
    DoubleVector vFrame{0.0};
    DoubleVector vValue;
    double dSum = 0.0;
    for (std::size_t uiFrame = 0; uiFrame != in_uiFrames; ++uiFrame) {
        vFrame[0] = static_cast<double>(1 + (in_uiSeed + 3 * uiFrame) % 7);
        if (!pX->setValue(vFrame) || !pY->evaluate(vValue)) {
            return std::numeric_limits<double>::quiet_NaN();
        }
        dSum += vValue[0];
    }
    return dSum;
}

/// How long each thread runs: they end one after the other, in the order of the numbers.
std::size_t framesOf(std::size_t in_uiThread) {
    return Frames * (1 + in_uiThread % 4);
}

class ThreadsTest : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Linked, ThreadsTest, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Optimized, ThreadsTest, testing::Values(true));

TEST_P(ThreadsTest, ClonesRunAndDieInAnyOrderWhileAnotherThreadLoadsAndLinks) {
    std::unique_ptr<Evaluator> pSource = newEvaluator("s");
    ASSERT_TRUE(pSource->link(GetParam()));
    ASSERT_TRUE(pSource->reconfigureExpressions());
    std::vector<double> vExpected;
    for (std::size_t uiThread = 0; uiThread != Threads; ++uiThread) {
        Evaluator alone(*pSource);
        vExpected.push_back(compute(alone, uiThread, framesOf(uiThread)));
    }

    std::atomic<bool> bStop{false};
    std::atomic<std::size_t> uiLinked{0};
    std::thread loader([&] {
        while (!bStop || uiLinked == 0) {
            // One of its names doesn't exist, which is written to the log.
            EXPECT_FALSE(newEvaluator("t")->link(true));
            const std::unique_ptr<Evaluator> pOther = newEvaluator("s");
            EXPECT_TRUE(pOther->link(true));
            ++uiLinked;
        }
    });

    std::mt19937 random(1);
    std::vector<std::size_t> vOrder(Threads);
    std::iota(vOrder.begin(), vOrder.end(), std::size_t(0));
    for (std::size_t uiRound = 0; uiRound != Rounds; ++uiRound) {
        std::shuffle(vOrder.begin(), vOrder.end(), random);
        std::vector<std::unique_ptr<Evaluator>> vClones(Threads);
        std::vector<std::thread> vThreads(Threads);
        std::vector<double> vResults(Threads);
        for (const std::size_t uiThread : vOrder) {
            vClones[uiThread] = std::make_unique<Evaluator>(*pSource);
            vThreads[uiThread] = std::thread([&vClones, &vResults, uiThread, uiRound] {
                vResults[uiThread] = compute(*vClones[uiThread], uiThread, framesOf(uiThread));
                // The others die where they were made, while some still run.
                if ((uiThread + uiRound) % 2 == 0) {
                    vClones[uiThread].reset();
                }
            });
        }
        // The source itself may go when the last clone has been taken.
        if (uiRound + 1 == Rounds) {
            pSource.reset();
        }
        std::shuffle(vOrder.begin(), vOrder.end(), random);
        for (const std::size_t uiThread : vOrder) {
            vThreads[uiThread].join();
            vClones[uiThread].reset();
        }
        EXPECT_EQ(vResults, vExpected);
    }
    bStop = true;
    loader.join();
}

} // namespace

} // namespace Velmora::Testing
