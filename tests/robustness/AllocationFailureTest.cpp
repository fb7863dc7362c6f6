// Memory may run out at any allocation of a host's whole run. Then a call throws `std::bad_alloc`,
// or gives false or a null handle, or the failure is asserted or logged; nothing leaks, and an
// evaluator that ran before goes on as if nothing had been.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <velmora/Assertion.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/Variable.h>
#include <velmora/math/xpr/VariableImpl.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "robustness/Allocations.h"
#include "robustness/EveryCase.h"
#include "robustness/ScriptFiles.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

namespace {

using Math::DoubleVector;
using namespace Math::Xpr;

/// Everything that the language has.
const std::map<std::string, std::string>& scripts() {
    static const std::map<std::string, std::string> s_mapTexts{
        {"./s.xpr", "/* all of it */ inputvar x\n"
                    "inputvar y; \n"
                    "limit = .5e1;   // a number\n"
                    "half(a) = a / 2\n"
                    "smooth<n>(a) = sum(slidingWindow<n>(a)) / n.size - limit\n"
                    "pick(a, i) = a[i, 0..1]\n"
                    "wide = {x, y, x + y, (x + y) * limit, {x, {y, 1}}}\n"
                    "choice = if(isGreater(max(x), limit), half(x), pick({y, x}, 1))\n"
                    "memory = {smooth<2>(max(x)), smooth<2>(max(x)), delta(x), debounce<2>(x), \\\n"
                    "          tappedDelay<3, 1, \"0.5 0.25\">(x)}\n"
                    "all = {wide, choice, memory, abs(log(y * y)), n.size}\n"},
        {"./n.xpr", "size = 2\nunused = sum(size)\n"},
        {"./c.xpr", "f = {left, sum(slidingWindow<2>(right)) * 2}\n"}};
    return s_mapTexts;
}

TSHandle<VirtualFileSystem> newFiles() {
    return TSHandle<VirtualFileSystem>(new ScriptFiles(scripts()));
}

/// Failed assertions and lines of ERROR level.
std::size_t s_uiReports = 0;

/// Takes no memory, unlike a capture.
void countAssertion(const char*, const char*, int) {
    ++s_uiReports;
}

class ErrorCounter : public log4cplus::Appender {
public:
    ~ErrorCounter() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& in_Event) override {
        s_uiReports += in_Event.getLogLevel() == log4cplus::ERROR_LOG_LEVEL ? 1 : 0;
    }
};

/// Every message from a level on is formatted and counted while it lives.
class Logging {
public:
    explicit Logging(log4cplus::LogLevel in_iLevel)
        : m_Root(log4cplus::Logger::getRoot()), m_iFormerLevel(m_Root.getLogLevel()) {
        m_Root.addAppender(m_pCounter);
        m_Root.setLogLevel(in_iLevel);
    }
    ~Logging() {
        m_Root.setLogLevel(m_iFormerLevel);
        m_Root.removeAppender(m_pCounter);
    }
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;

private:
    log4cplus::Logger m_Root;
    const log4cplus::LogLevel m_iFormerLevel;
    log4cplus::SharedAppenderPtr m_pCounter{new ErrorCounter};
};

using Values = std::vector<double>;

/// The inputs of a few frames. They outlive every graph.
const DoubleVector& input(std::size_t in_uiFrame, std::size_t in_uiInput) {
    static const DoubleVector s_vInputs[][2] = {{DoubleVector{1.0}, DoubleVector{2.0}},
                                                {DoubleVector{7.5}, DoubleVector{-1.0}},
                                                {DoubleVector{-3.0}, DoubleVector{0.25}}};
    return s_vInputs[in_uiFrame % 3][in_uiInput];
}

bool evaluate(Evaluator& inout_Evaluator, std::size_t in_uiFrame, Values& inout_vValues) {
    const Handle<Variable> pX = inout_Evaluator.getVariable("s.x");
    const Handle<Variable> pY = inout_Evaluator.getVariable("s.y");
    const Handle<Expression> pAll = inout_Evaluator.getExpression("s.all");
    if (pX.isNull() || pY.isNull() || pAll.isNull() || !pX->setValue(input(in_uiFrame, 0)) ||
        !pY->setValue(input(in_uiFrame, 1))) {
        return false;
    }
    DoubleVector vValue;
    if (!pAll->evaluate(vValue)) {
        return false;
    }
    inout_vValues.insert(inout_vValues.end(), vValue.begin(), vValue.end());
    return true;
}

bool setUp(Evaluator& inout_Evaluator) {
    if (!inout_Evaluator.configure(scriptsIn("."), newFiles()) || !inout_Evaluator.addScript("s") ||
        !inout_Evaluator.link(true)) {
        return false;
    }
    const Handle<Expression> pAll = inout_Evaluator.getExpression("s.all");
    return !pAll.isNull() && pAll->configure(newFiles());
}

bool compute(FeatureComputerWithInputs& inout_Computer, std::size_t in_uiFrame,
             Values& inout_vValues) {
    DoubleVector vFeature;
    if (!inout_Computer.setInput("left", input(in_uiFrame, 0)) ||
        !inout_Computer.setInput("right", input(in_uiFrame, 1)) ||
        !inout_Computer.computeFeatures(vFeature)) {
        return false;
    }
    inout_vValues.insert(inout_vValues.end(), vFeature.begin(), vFeature.end());
    return true;
}

/// A host's whole run: whether every call has succeeded, and what it has computed.
bool runHost(const Evaluator& in_Running, Values& out_vValues) {
    Evaluator evaluator;
    if (!setUp(evaluator) || !evaluate(evaluator, 0, out_vValues) ||
        !evaluate(evaluator, 1, out_vValues)) {
        return false;
    }
    const std::unique_ptr<Cloneable> pClone(evaluator.clone());
    auto* const pCopy = dynamic_cast<Evaluator*>(pClone.get());
    if (pCopy == nullptr) {
        // A null is a report of its own.
        ++s_uiReports;
        return false;
    }
    if (!evaluate(*pCopy, 2, out_vValues) || !evaluate(evaluator, 2, out_vValues) ||
        !evaluator.dump("/dev/null") || !evaluator.getExpression("s.all")->reset() ||
        !evaluate(evaluator, 0, out_vValues)) {
        return false;
    }
    Evaluator ofRunning(in_Running);
    if (!ofRunning.reconfigureExpressions() || !evaluate(ofRunning, 0, out_vValues)) {
        return false;
    }
    FeatureComputerWithInputs computer("f");
    return computer.setInputNames({"left", "right"}) && computer.setXprFilename("c", newFiles()) &&
           compute(computer, 0, out_vValues) && compute(computer, 1, out_vValues);
}

enum class Outcome { Done, Refused, Thrown };

Outcome tryHost(const Evaluator& in_Running, Values& out_vValues) {
    try {
        return runHost(in_Running, out_vValues) ? Outcome::Done : Outcome::Refused;
    } catch (const std::bad_alloc&) {
        return Outcome::Thrown;
    }
}

/// The lowest level whose messages are written.
class AllocationFailureTest : public testing::TestWithParam<log4cplus::LogLevel> {
protected:
    void SetUp() override {
        m_pFormer = Assertion::setHandler(&countAssertion);
        // Once for what lives for ever from its first use on.
        ASSERT_EQ(runAll(Never), Outcome::Done);
        ASSERT_EQ(runAll(Never), Outcome::Done);
        m_vExpected = m_vValues;
        m_vExpectedBehind = m_vBehind;
        ASSERT_FALSE(m_vExpectedBehind.empty());
    }

    void TearDown() override { Assertion::setHandler(m_pFormer); }

    /// The host's run with that allocation failing, beside an evaluator that has been running and
    /// goes on.
    Outcome runAll(std::size_t in_uiOthers) {
#if defined(__SANITIZE_ADDRESS__)
        // The blocks are counted here, and what has lost its counter is no finding.
        const __lsan::ScopedDisabler disabler;
#endif
        m_vValues.clear();
        m_vBehind.clear();
        Evaluator running;
        if (!setUp(running) || !evaluate(running, 1, m_vBehind)) {
            throw std::runtime_error("the evaluator can't be set up");
        }
        s_uiReports = 0;
        if (in_uiOthers != Never) {
            Allocations::failBehind(in_uiOthers);
        }
        const Outcome eOutcome = tryHost(running, m_vValues);
        Allocations::stopFailing();
        for (const std::size_t uiFrame : {2, 0}) {
            if (!evaluate(running, uiFrame, m_vBehind)) {
                m_vBehind.clear();
            }
        }
        return eOutcome;
    }

    /// An empty text if all is as it should be.
    std::string problemBehind(std::size_t in_uiOthers) {
        long lLeft = 0;
        Outcome eOutcome = Outcome::Done;
        // The first failure of a kind may leave what lives for ever from its first use on.
        for (int iTry = 0; iTry == 0 || (iTry == 1 && lLeft != 0); ++iTry) {
            const std::size_t uiLive = Allocations::getLiveBlocks();
            eOutcome = runAll(in_uiOthers);
            lLeft = static_cast<long>(Allocations::getLiveBlocks() - uiLive);
        }
        ++m_uiOutcomes[static_cast<std::size_t>(eOutcome)];
        if (m_vBehind != m_vExpectedBehind) {
            return "the evaluator that ran before has other values";
        }
        if (eOutcome == Outcome::Done && m_vValues != m_vExpected && s_uiReports == 0) {
            return "other values, and nothing reported";
        }
        if (eOutcome == Outcome::Refused && s_uiReports == 0) {
            return "refused, and nothing reported";
        }
        // An object whose counter can't be allocated is never destroyed.
        const char* szAccount = Allocations::getFailedAccount();
        const std::string strAccount(szAccount == nullptr ? "" : szAccount);
        if (strAccount == "ReferenceCount" || strAccount == "TSReferenceCount") {
            ++m_uiCounters;
        } else if (lLeft != 0) {
            return std::to_string(lLeft) + " blocks left; failed account: " + strAccount;
        }
        return std::string();
    }

    void failAll(std::size_t in_uiStride) {
        const std::size_t uiStride = isEveryCaseAsked() ? 1 : in_uiStride;
        std::size_t uiAllocation = 0;
        for (bool bFailed = true; bFailed; uiAllocation += uiStride) {
            const std::string strProblem = problemBehind(uiAllocation);
            ASSERT_EQ(strProblem, "") << "allocation " << uiAllocation;
            bFailed = Allocations::hasFailed();
        }
        EXPECT_GT(uiAllocation, std::size_t(5000));
        if (isEveryCaseAsked()) {
            std::printf("%zu allocations, of which %zu for counters: %zu runs went on, %zu were "
                        "refused, %zu threw\n",
                        uiAllocation - 1, m_uiCounters, m_uiOutcomes[0] - 1, m_uiOutcomes[1],
                        m_uiOutcomes[2]);
        }
    }

    static constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

    const Logging m_Logging{GetParam()};
    Values m_vValues;
    Values m_vBehind;
    Values m_vExpected;
    Values m_vExpectedBehind;
    std::size_t m_uiCounters = 0;
    std::size_t m_uiOutcomes[3] = {};

private:
    Assertion::Handler m_pFormer = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Errors, AllocationFailureTest,
                         testing::Values(log4cplus::ERROR_LOG_LEVEL));
INSTANTIATE_TEST_SUITE_P(Everything, AllocationFailureTest,
                         testing::Values(log4cplus::TRACE_LOG_LEVEL));

TEST_P(AllocationFailureTest, EachAllocationOfARunMayFail) {
    failAll(GetParam() == log4cplus::ERROR_LOG_LEVEL ? 97 : 1999);
}

/// Frames of features with and without memory, of which the first runs out of memory at that
/// allocation and is asked for once more. What they gave.
Values computeFramesOverAFailure(std::size_t in_uiAllocation, bool in_bOptimize,
                                 bool& out_bFailed) {
    Evaluator evaluator;
    std::istringstream script(
        "inputvar x\ninputvar y\n"
        "a = (x + y) * 2 - x / y\nb = a + x\nc = {sum(b), a, x}\n"
        "d = {slidingWindow<5>(x), tappedDelay<4, 0, \"\">(x), tappedDelay<2, 1, "
        "\"7\">(y)}\n"
        "e = {delta(c), debounce<2>(y), debounceOnOff<2, 2>(x), "
        "vad<-40.0, 2>(x * x)}\nf = {c, d, 1 / (x - 1)}\n");
    if (!evaluator.configure(scriptsIn("."), newFiles()) || !evaluator.addScript(script, "s") ||
        !evaluator.link(in_bOptimize) || !evaluator.reconfigureExpressions()) {
        throw std::runtime_error("the evaluator can't be set up");
    }
    const Handle<Variable> pX = evaluator.getVariable("s.x");
    const Handle<Variable> pY = evaluator.getVariable("s.y");
    std::vector<Handle<Expression>> vFeatures;
    for (const char* szName : {"s.f", "s.b", "s.e", "s.d", "s.c", "s.a"}) {
        vFeatures.push_back(evaluator.getExpression(szName));
    }
    const auto evaluateAll = [&](Values& inout_vValues) {
        for (const auto& pFeature : vFeatures) {
            LimitedObjPtr<DoubleVector> pValue;
            if (pFeature->evaluate(pValue) && !pValue.isNull()) {
                inout_vValues.insert(inout_vValues.end(), pValue->begin(), pValue->end());
            }
        }
    };
    pX->setValue(input(0, 0));
    pY->setValue(input(0, 1));
    Values vLost;
    vLost.reserve(100);
    Allocations::failBehind(in_uiAllocation);
    try {
        evaluateAll(vLost);
    } catch (const std::bad_alloc&) {
    }
    Allocations::stopFailing();
    out_bFailed = Allocations::hasFailed();
    Values vValues;
    evaluateAll(vValues);
    for (std::size_t uiFrame = 1; uiFrame != 6; ++uiFrame) {
        pX->setValue(input(uiFrame, 0));
        pY->setValue(input(uiFrame, 1));
        evaluateAll(vValues);
    }
    return vValues;
}

TEST(FrameAllocationTest, FrameThatRanOutOfMemoryCanBeTriedAgainAndCountsOnce) {
    for (const bool bOptimize : {false, true}) {
        bool bFailed = false;
        constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();
        const Values vExpected = computeFramesOverAFailure(Never, bOptimize, bFailed);
        ASSERT_GT(vExpected.size(), 100u);
        std::size_t uiAllocation = 0;
        do {
            ASSERT_EQ(computeFramesOverAFailure(uiAllocation, bOptimize, bFailed), vExpected)
                << "allocation " << uiAllocation << (bOptimize ? ", optimised" : "");
            ++uiAllocation;
        } while (bFailed);
        EXPECT_GT(uiAllocation, std::size_t(20));
    }
}

TEST(FrameAllocationTest, FailureBehindWhichMemoryRanOutIsForgottenWithTheFrame) {
    const DoubleVector vOne{1.0}, vLong{1.0, 2.0, 3.0}, vZero{0.0}, vTwo{2.0};
    bool bFailed = true;
    for (std::size_t uiAllocation = 0; bFailed; ++uiAllocation) {
        Evaluator evaluator;
        std::istringstream script("inputvar a\ninputvar b\nr = {a, 1 / b}\n");
        ASSERT_TRUE(evaluator.configure(scriptsIn("."), newFiles()) &&
                    evaluator.addScript(script, "s") && evaluator.link(true));
        const Handle<Variable> pA = evaluator.getVariable("s.a");
        const Handle<Variable> pB = evaluator.getVariable("s.b");
        const Handle<Expression> pR = evaluator.getExpression("s.r");
        DoubleVector vResult;
        pA->setValue(vOne);
        pB->setValue(vTwo);
        ASSERT_TRUE(pR->evaluate(vResult));
        pA->setValue(vLong);
        pB->setValue(vZero);
        LimitedObjPtr<DoubleVector> pValue;
        Allocations::failBehind(uiAllocation);
        try {
            static_cast<void>(pR->evaluate(pValue));
        } catch (const std::bad_alloc&) {
        }
        Allocations::stopFailing();
        bFailed = Allocations::hasFailed();
        if (bFailed) {
            pB->setValue(vTwo);
            ASSERT_TRUE(pR->evaluate(vResult));
            EXPECT_EQ(Values(vResult.begin(), vResult.end()), (Values{1.0, 2.0, 3.0, 0.5}))
                << "allocation " << uiAllocation;
        }
    }
}

TEST(SealAllocationTest,
     GraphBesideOneWhoseSealRanOutOfMemoryStaysRightAndTheOtherCanBeSealedAgain) {
    const DoubleVector vOne{1.0}, vTwo{2.0}, vFive{5.0};
    std::size_t uiFollowed = 0;
    bool bFailed = true;
    for (std::size_t uiAllocation = 0; bFailed; ++uiAllocation) {
        const Handle<VariableImpl> pX(new VariableImpl);
        Variable& x = *pX;
        x.setValue(vOne);
        const auto addOne = [&] {
            const Handle<OperatorPlus> pSum(new OperatorPlus);
            pSum->getLeftArgument()->setValue(Handle<Expression>(pX));
            pSum->getRightArgument()->setValue(Handle<Expression>(new ConstantImpl(vOne)));
            return pSum;
        };
        const Handle<OperatorPlus> pSealed = addOne();
        pSealed->seal();
        const Handle<OperatorPlus> pOther = addOne();
        Allocations::failBehind(uiAllocation);
        try {
            pOther->seal();
        } catch (const std::bad_alloc&) {
        }
        Allocations::stopFailing();
        bFailed = Allocations::hasFailed();
        const auto valueFor = [&](const Handle<OperatorPlus>& in_pSum, const DoubleVector& in_vX) {
            x.setValue(in_vX);
            DoubleVector vResult;
            return in_pSum->evaluate(vResult) ? vResult[0] : 0.0;
        };
        EXPECT_EQ(valueFor(pSealed, vTwo), 3.0) << "allocation " << uiAllocation;
        EXPECT_EQ(valueFor(pSealed, vFive), 6.0) << "allocation " << uiAllocation;
        // Where all nodes know their readers already, the failed seal is as good as a whole one.
        if (bFailed && valueFor(pOther, vOne) == 2.0 && valueFor(pOther, vTwo) == 3.0) {
            ++uiFollowed;
        }
        pOther->seal();
        for (const auto& pSum : {pSealed, pOther}) {
            EXPECT_EQ(valueFor(pSum, vOne), 2.0) << "allocation " << uiAllocation;
            EXPECT_EQ(valueFor(pSum, vFive), 6.0) << "allocation " << uiAllocation;
        }
    }
    EXPECT_GT(uiFollowed, 5u);
}

} // namespace

} // namespace Velmora::Testing
