// A script may be nested, and a graph linked, deeper than the stack of a thread is; it goes on on a
// further one. When the system has none, the call throws `std::bad_alloc` and leaves nothing
// behind. Evaluators that were there go on, and the call works as soon as there is a stack.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <velmora/DeepCall.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/Variable.h>

#include "robustness/Allocations.h"
#include "robustness/EveryCase.h"
#include "robustness/Stacks.h"
#include "support/AssertionCapture.h"
#include "support/LinkBench.h"
#include "support/StackThread.h"

namespace Velmora::Testing {

namespace {

using Math::DoubleVector;
using namespace Math::Xpr;

std::string repeated(const std::string& in_strText, std::size_t in_uiCount) {
    std::string strResult;
    for (std::size_t ui = 0; ui != in_uiCount; ++ui) {
        strResult += in_strText;
    }
    return strResult;
}

constexpr std::size_t Terms = 1000;
constexpr std::size_t Nesting = 300;

/// Nested deeply for the parser, and a deep graph for all others.
const std::string& deepScript() {
    static const std::string s_strScript = "inputvar a\nf(u) = u" + repeated("+u", Terms - 1) +
                                           "\nx = " + repeated("(", Nesting) + "a" +
                                           repeated(")", Nesting) + repeated("+a", Terms - 1) +
                                           "\ny = {sum(slidingWindow<2>(a)), x, f(a)}\n";
    return s_strScript;
}

/// An evaluator, and what its host does with it.
class Host {
public:
    explicit Host(bool in_bOptimize) : m_bOptimize(in_bOptimize) {}

    bool load(const std::string& in_strScript) {
        std::istringstream stream(in_strScript);
        return m_Evaluator.configure(scriptsIn("."), TSHandle<VirtualFileSystem>()) &&
               m_Evaluator.addScript(stream, "s");
    }
    bool link() { return m_Evaluator.link(m_bOptimize); }
    bool reconfigure() { return m_Evaluator.reconfigureExpressions(); }
    bool set(const DoubleVector& in_vInput) {
        return m_Evaluator.getVariable("s.a")->setValue(in_vInput);
    }
    bool evaluate() {
        DoubleVector vValue;
        if (!m_Evaluator.getExpression("s.y")->evaluate(vValue)) {
            return false;
        }
        m_vValues.insert(m_vValues.end(), vValue.begin(), vValue.end());
        return true;
    }
    bool reset() { return m_Evaluator.getExpression("s.y")->reset(); }
    bool goOnWithACopy() {
        m_Evaluator = Evaluator(m_Evaluator);
        return true;
    }
    bool dump() { return m_Evaluator.dump("/dev/null"); }

    /// What it has computed since the last call.
    std::vector<double> takeValues() { return std::exchange(m_vValues, {}); }

private:
    bool m_bOptimize;
    Evaluator m_Evaluator;
    std::vector<double> m_vValues;
};

/// They outlive every graph.
const DoubleVector& input(std::size_t in_uiFrame) {
    static const DoubleVector s_vInputs[] = {DoubleVector{3.0}, DoubleVector{-0.5},
                                             DoubleVector{7.0}, DoubleVector{1.0}};
    return s_vInputs[in_uiFrame];
}

using Step = std::function<bool(Host&)>;

/// A host's whole run. A frame that couldn't be computed is asked for once more, and counts once.
const std::vector<Step>& steps() {
    static const std::vector<Step> s_vSteps{
        [](Host& inout_Host) { return inout_Host.load(deepScript()); },
        &Host::link,
        &Host::reconfigure,
        [](Host& inout_Host) { return inout_Host.set(input(0)); },
        &Host::evaluate,
        [](Host& inout_Host) { return inout_Host.set(input(1)); },
        &Host::evaluate,
        &Host::goOnWithACopy,
        [](Host& inout_Host) { return inout_Host.set(input(2)); },
        &Host::evaluate,
        &Host::reset,
        [](Host& inout_Host) { return inout_Host.set(input(3)); },
        &Host::evaluate,
        &Host::dump};
    return s_vSteps;
}

constexpr std::size_t LinkStep = 1;

const char* const LinkedTwice =
    "!m_bLinked && \"expressions are already linked --> \" \"skipping linking\"";

class StackFailureTest : public testing::TestWithParam<bool> {
protected:
    static constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

    void SetUp() override {
        ASSERT_TRUE(m_Shallow.load("inputvar a\ny = a + 1\n") && m_Shallow.link());
        ASSERT_TRUE(m_Running.load(deepScript()) && m_Running.link() && m_Running.reconfigure());
        ASSERT_TRUE(m_Running.set(input(0)) && m_Running.evaluate());
        m_Running.takeValues();
        run(Never, 0);
        m_vExpected = std::exchange(m_vValues, {});
        ASSERT_EQ(m_vExpected.size(), std::size_t(12));
    }

    /// The whole run, each step on a thread of its own. One of them gets so many stacks and no more
    /// until it has thrown, and is made once more then.
    void run(std::size_t in_uiFailing, std::size_t in_uiOthers) {
        auto pHost = std::make_unique<Host>(GetParam());
        Host& host = *pHost;
        for (std::size_t ui = 0; ui != steps().size(); ++ui) {
            runOnStack(SmallStack, [&] {
                if (ui == in_uiFailing && isDone(steps()[ui], host, in_uiOthers)) {
                    return;
                }
                const std::size_t uiBefore = Stacks::getCount();
                EXPECT_TRUE(steps()[ui](host));
                m_vStacks[ui] = Stacks::getCount() - uiBefore;
            });
        }
        m_vValues = host.takeValues();
        runOnStack(SmallStack, [&] {
            // A destructor couldn't say that there is none.
            Stacks::refuseBehind(0);
            pHost.reset();
        });
    }

    /// False if the step has to be made once more.
    bool isDone(const Step& in_Step, Host& inout_Host, std::size_t in_uiOthers) {
        const std::size_t uiBefore = Stacks::getCount();
        Stacks::refuseBehind(in_uiOthers);
        bool bThrew = false;
        try {
            EXPECT_TRUE(in_Step(inout_Host));
        } catch (const std::bad_alloc&) {
            bThrew = true;
        }
        EXPECT_EQ(bThrew, Stacks::getCount() - uiBefore > in_uiOthers);
        // What needs no further stack goes on in the meantime.
        EXPECT_TRUE(m_Shallow.set(input(0)) && m_Shallow.evaluate());
        EXPECT_EQ(m_Shallow.takeValues(), std::vector<double>{4.0});
        Stacks::allow();
        return !bThrew;
    }

    /// Only of what had been linked, couldn't be optimised, and was to be linked once more.
    void checkAssertions(std::size_t in_uiFailing) {
        const std::vector<std::string> vConditions = m_Assertions.expressions();
        if (!vConditions.empty()) {
            EXPECT_EQ(vConditions, std::vector<std::string>{LinkedTwice});
            EXPECT_EQ(in_uiFailing, LinkStep);
        }
        m_Assertions.clear();
    }

    /// A run with a failure: the values are right, also those of the evaluator that ran before, and
    /// nothing is left.
    void expectRight(std::size_t in_uiFailing, std::size_t in_uiOthers) {
        SCOPED_TRACE("step " + std::to_string(in_uiFailing) + " behind " +
                     std::to_string(in_uiOthers) + " stacks");
        long lLeft = 0;
        // The first failure of a kind may leave what lives for ever from its first use on.
        for (int iTry = 0; iTry == 0 || (iTry == 1 && lLeft != 0); ++iTry) {
            const std::size_t uiLive = Allocations::getLiveBlocks();
            run(in_uiFailing, in_uiOthers);
            EXPECT_EQ(std::exchange(m_vValues, {}), m_vExpected);
            checkAssertions(in_uiFailing);
            lLeft = static_cast<long>(Allocations::getLiveBlocks() - uiLive);
        }
        EXPECT_EQ(lLeft, 0);
        EXPECT_TRUE(m_Running.set(input(0)) && m_Running.evaluate());
        EXPECT_EQ(m_Running.takeValues(), (std::vector<double>{6.0, 3.0 * Terms, 3.0 * Terms}));
    }

    AssertionCapture m_Assertions;
    Host m_Shallow{GetParam()};
    Host m_Running{GetParam()};
    std::vector<double> m_vValues;
    std::vector<double> m_vExpected;
    /// The further stacks that each step has needed.
    std::vector<std::size_t> m_vStacks = std::vector<std::size_t>(steps().size());
};

INSTANTIATE_TEST_SUITE_P(Linked, StackFailureTest, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Optimized, StackFailureTest, testing::Values(true));

TEST_P(StackFailureTest, EachStepOfARunMayFindNoFurtherStack) {
    const auto vStacks = m_vStacks;
    const std::size_t uiStride = isEveryCaseAsked() ? 1 : 10;
    std::size_t uiFailures = 0;
    std::size_t uiFailedSteps = 0;
    for (std::size_t uiStep = 0; uiStep != vStacks.size(); ++uiStep) {
        for (std::size_t uiOthers = 0; uiOthers < vStacks[uiStep]; uiOthers += uiStride) {
            expectRight(uiStep, uiOthers);
            ASSERT_FALSE(HasFailure());
            ++uiFailures;
        }
        uiFailedSteps += vStacks[uiStep] == 0 ? 0 : 1;
    }
    // At least loading, linking, copying and resetting.
    EXPECT_GE(uiFailedSteps, std::size_t(4));
    if (isEveryCaseAsked()) {
        std::printf("%zu failures in %zu steps\n", uiFailures, uiFailedSteps);
    }
}

/// A recursion of which a few thousand levels fill a stack.
std::size_t descend(std::size_t in_uiLevels) {
    return DeepCall::run([&] {
        volatile char acRoom[16384];
        acRoom[0] = 1;
        return in_uiLevels == 0 ? 0
                                : descend(in_uiLevels - 1) + static_cast<std::size_t>(acRoom[0]);
    });
}

TEST(DeepCallFailureTest, FailureOnAFurtherStackComesThroughAllThatWereThere) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "what the thread sanitizer keeps on a small stack leaves too little of it";
#endif
    static constexpr std::size_t Levels = 10000;
    runOnStack(SmallStack, [] {
        Stacks::refuseBehind(2);
        EXPECT_THROW(descend(Levels), std::bad_alloc);
        EXPECT_FALSE(DeepCall::isStackLow());
        EXPECT_EQ(descend(1), std::size_t(1));
        Stacks::allow();
        EXPECT_EQ(descend(Levels), Levels);
    });
}

} // namespace

} // namespace Velmora::Testing
