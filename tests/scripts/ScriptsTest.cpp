#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <velmora/math/xpr/Evaluator.h>

#include "scripts/ScriptCase.h"
#include "support/AssertionCapture.h"
#include "support/GraphInvariants.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {

namespace {

using namespace Math;
using namespace Math::Xpr;
using Stage = ScriptCase::Stage;
using Value = ScriptCase::Value;

const std::filesystem::path& scriptsFolder() {
    static const std::filesystem::path s_path =
        std::filesystem::path(VELMORA_SOURCE_DIR) / "tests" / "scripts";
    return s_path;
}

std::vector<std::string> allScripts() {
    std::vector<std::string> vScripts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(scriptsFolder())) {
        if (entry.path().extension() == ".xpr") {
            vScripts.push_back(std::filesystem::relative(entry.path(), scriptsFolder()).string());
        }
    }
    std::sort(vScripts.begin(), vScripts.end());
    return vScripts;
}

std::string nameOf(const ::testing::TestParamInfo<std::string>& in_Info) {
    std::string strName(in_Info.param, 0, in_Info.param.rfind('.'));
    std::replace_if(
        strName.begin(), strName.end(),
        [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return strName;
}

/// One way from a script to what a host evaluates.
struct Way {
    enum class Clone { None, Raw, Linked, RawAndLinked, BetweenFrames };

    const char* m_szName;
    bool m_bOptimize;
    Clone m_Clone = Clone::None;
    bool m_bFromStream = false;
    bool m_bAfterReset = false;

    bool clonesRaw() const { return m_Clone == Clone::Raw || m_Clone == Clone::RawAndLinked; }
    bool clonesLinked() const { return m_Clone == Clone::Linked || m_Clone == Clone::RawAndLinked; }
};

constexpr Way Ways[] = {
    {"linked", false},
    {"optimised", true},
    {"from a stream", true, Way::Clone::None, true},
    {"a clone of the raw, linked", false, Way::Clone::Raw},
    {"a clone of the raw, optimised", true, Way::Clone::Raw},
    {"a clone of the linked", false, Way::Clone::Linked},
    {"a clone of the optimised", true, Way::Clone::Linked},
    {"a clone of a clone, optimised", true, Way::Clone::RawAndLinked},
    {"linked, a clone between frames", false, Way::Clone::BetweenFrames},
    {"optimised, a clone between frames", true, Way::Clone::BetweenFrames},
    {"linked, once more after reset", false, Way::Clone::None, false, true},
    {"optimised, once more after reset", true, Way::Clone::None, false, true},
};

/// What one way gave.
struct Outcome {
    Stage m_FailedStage = Stage::None;
    std::vector<std::string> m_vErrors;
    std::vector<std::string> m_vAssertions;
    std::vector<std::string> m_vEvaluationErrors;
    std::vector<std::string> m_vEvaluationAssertions;
    /// Frame by frame, in the order of the expectations.
    std::vector<Value> m_vValues;
};

bool sameBits(const Value& in_vA, const Value& in_vB) {
    return in_vA.has_value() == in_vB.has_value() &&
           (!in_vA || (in_vA->size() == in_vB->size() &&
                       (in_vA->empty() || std::memcmp(in_vA->begin(), in_vB->begin(),
                                                      in_vA->size() * sizeof(double)) == 0)));
}

bool isClose(double in_dA, double in_dB) {
    return in_dA == in_dB || (std::isnan(in_dA) && std::isnan(in_dB)) ||
           std::abs(in_dA - in_dB) <= 1e-12 * std::abs(in_dB);
}

bool matches(const Value& in_vActual, const Value& in_vExpected, bool in_bExact) {
    if (!in_vActual || !in_vExpected) {
        return in_vActual.has_value() == in_vExpected.has_value();
    }
    std::ostringstream actual, expected;
    actual << *in_vActual;
    expected << *in_vExpected;
    return in_bExact ? actual.str() == expected.str()
                     : std::equal(in_vActual->begin(), in_vActual->end(), in_vExpected->begin(),
                                  in_vExpected->end(), isClose);
}

std::string textOf(const Value& in_vValue) {
    std::ostringstream text;
    if (in_vValue) {
        text << *in_vValue;
    } else {
        text << "fails";
    }
    return text.str();
}

class ScriptsTest : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override { m_Case = ScriptCase::read((scriptsFolder() / GetParam()).string()); }

    Outcome run(const Way& in_Way) const {
        Outcome outcome;
        const AssertionCapture assertions;
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        std::unique_ptr<Evaluator> pEvaluator = build(in_Way, outcome.m_FailedStage);
        outcome.m_vErrors = errorsOf(log, 0);
        outcome.m_vAssertions = assertions.expressions();
        const std::size_t uiErrors = outcome.m_vErrors.size();
        if (outcome.m_FailedStage == Stage::Load) {
            dropReportOfLoad(outcome.m_vErrors);
        }
        if (outcome.m_FailedStage != Stage::None) {
            return outcome;
        }
        const std::size_t uiAssertions = outcome.m_vAssertions.size();
        const std::size_t uiFrames = std::max<std::size_t>(m_Case.m_vFrames.size(), 1);
        if (in_Way.m_bAfterReset) {
            evaluateFrames(pEvaluator, uiFrames, Way::Clone::None);
            reset(*pEvaluator);
        }
        outcome.m_vValues = evaluateFrames(pEvaluator, uiFrames, in_Way.m_Clone);
        outcome.m_vEvaluationErrors = distinct(errorsOf(log, uiErrors));
        const auto vAssertions = assertions.expressions();
        outcome.m_vEvaluationAssertions = distinct(
            {vAssertions.begin() + static_cast<std::ptrdiff_t>(uiAssertions), vAssertions.end()});
        return outcome;
    }

    void compare(const Way& in_Way, const Outcome& in_Outcome, const Outcome& in_Plain) const {
        EXPECT_EQ(in_Outcome.m_FailedStage, m_Case.m_FailingStage);
        EXPECT_EQ(in_Outcome.m_vErrors, m_Case.m_vErrors);
        EXPECT_EQ(in_Outcome.m_vAssertions, m_Case.m_vAssertions);
        // A sealed graph passes over what fails below an operator.
        const bool bPlain = !in_Way.m_bOptimize;
        std::vector<std::string> vSealedErrors(m_Case.m_vEvaluationErrors);
        vSealedErrors.insert(vSealedErrors.end(), m_Case.m_vSealedErrors.begin(),
                             m_Case.m_vSealedErrors.end());
        EXPECT_TRUE(bPlain ? in_Outcome.m_vEvaluationErrors == m_Case.m_vEvaluationErrors
                           : isSubset(in_Outcome.m_vEvaluationErrors, vSealedErrors))
            << ::testing::PrintToString(in_Outcome.m_vEvaluationErrors);
        EXPECT_TRUE(
            bPlain ? in_Outcome.m_vEvaluationAssertions == m_Case.m_vEvaluationAssertions
                   : isSubset(in_Outcome.m_vEvaluationAssertions, m_Case.m_vEvaluationAssertions))
            << ::testing::PrintToString(in_Outcome.m_vEvaluationAssertions);
        ASSERT_EQ(in_Outcome.m_vValues.size(), in_Plain.m_vValues.size());
        for (std::size_t ui = 0; ui != in_Outcome.m_vValues.size(); ++ui) {
            EXPECT_TRUE(sameBits(in_Outcome.m_vValues[ui], in_Plain.m_vValues[ui]))
                << textOf(in_Outcome.m_vValues[ui]) << " and not "
                << textOf(in_Plain.m_vValues[ui]);
        }
    }

    void compareWithScript(const Outcome& in_Plain) const {
        if (in_Plain.m_vValues.empty()) {
            return;
        }
        const std::size_t uiNames = m_Case.m_vExpectations.size();
        const std::size_t uiFrames = std::max<std::size_t>(m_Case.m_vFrames.size(), 1);
        for (std::size_t uiName = 0; uiName != uiNames; ++uiName) {
            const ScriptCase::Expectation& expectation = m_Case.m_vExpectations[uiName];
            ASSERT_EQ(expectation.m_vValues.size(), uiFrames) << expectation.m_strName;
            for (std::size_t uiFrame = 0; uiFrame != uiFrames; ++uiFrame) {
                const Value& vActual = in_Plain.m_vValues[uiFrame * uiNames + uiName];
                EXPECT_TRUE(matches(vActual, expectation.m_vValues[uiFrame], expectation.m_bExact))
                    << expectation.m_strName << " in frame " << uiFrame + 1 << " is "
                    << textOf(vActual) << " and not " << textOf(expectation.m_vValues[uiFrame]);
            }
        }
    }

private:
    std::unique_ptr<Evaluator> build(const Way& in_Way, Stage& out_FailedStage) const {
        auto pEvaluator = std::make_unique<Evaluator>();
        EXPECT_TRUE(pEvaluator->configure(scriptsIn(m_Case.m_strDirectory.c_str()),
                                          TSHandle<VirtualFileSystem>()));
        std::istringstream stream(m_Case.m_strText);
        const bool bLoaded = in_Way.m_bFromStream
                                 ? pEvaluator->addScript(stream, m_Case.m_strStem.c_str())
                                 : pEvaluator->addScript(m_Case.m_strStem.c_str());
        if (!bLoaded) {
            out_FailedStage = Stage::Load;
            return nullptr;
        }
        if (in_Way.clonesRaw()) {
            pEvaluator = std::make_unique<Evaluator>(*pEvaluator);
        }
        if (!pEvaluator->link(in_Way.m_bOptimize)) {
            out_FailedStage = Stage::Link;
            return nullptr;
        }
        if (in_Way.clonesLinked()) {
            pEvaluator = std::make_unique<Evaluator>(*pEvaluator);
        }
        if (!pEvaluator->reconfigureExpressions()) {
            out_FailedStage = Stage::Configure;
        }
        return pEvaluator;
    }

    std::vector<Value> evaluateFrames(std::unique_ptr<Evaluator>& inout_pEvaluator,
                                      std::size_t in_uiFrames, Way::Clone in_Clone) const {
        std::vector<Value> vValues;
        for (std::size_t uiFrame = 0; uiFrame != in_uiFrames; ++uiFrame) {
            if (in_Clone == Way::Clone::BetweenFrames && uiFrame == in_uiFrames / 2) {
                inout_pEvaluator = std::make_unique<Evaluator>(*inout_pEvaluator);
            }
            evaluateFrame(*inout_pEvaluator, uiFrame, vValues);
        }
        return vValues;
    }

    void reset(Evaluator& inout_Evaluator) const {
        for (const ScriptCase::Expectation& expectation : m_Case.m_vExpectations) {
            EXPECT_TRUE(inout_Evaluator.getExpression(expectation.m_strName.c_str())->reset());
        }
    }

    void evaluateFrame(Evaluator& inout_Evaluator, std::size_t in_uiFrame,
                       std::vector<Value>& out_vValues) const {
        if (in_uiFrame < m_Case.m_vFrames.size()) {
            for (const auto& [strName, vValue] : m_Case.m_vFrames[in_uiFrame]) {
                const Handle<Variable> pInput(inout_Evaluator.getVariable(strName.c_str()));
                ASSERT_FALSE(pInput.isNull()) << strName;
                ASSERT_TRUE(pInput->setValue(vValue));
            }
        }
        const Evaluations evaluations =
            m_Case.m_vEvaluationErrors.empty() && m_Case.m_vEvaluationAssertions.empty()
                ? Evaluations::Succeeded
                : Evaluations::MayHaveFailed;
        for (const ScriptCase::Expectation& expectation : m_Case.m_vExpectations) {
            const Handle<Expression> pExpression(
                inout_Evaluator.getExpression(expectation.m_strName.c_str()));
            ASSERT_FALSE(pExpression.isNull()) << expectation.m_strName;
            DoubleVector vValue;
            const bool bEvaluated = pExpression->evaluate(vValue);
            out_vValues.push_back(bEvaluated ? Value(vValue) : Value());
            LimitedObjPtr<DoubleVector> pValue;
            if (bEvaluated) {
                ASSERT_TRUE(pExpression->evaluate(pValue));
                EXPECT_TRUE(sameBits(Value(*pValue), Value(vValue)));
            }
            EXPECT_TRUE(checkInvariants(pExpression, evaluations));
        }
    }

    std::vector<std::string> errorsOf(const LogCapture& in_Log, std::size_t in_uiFirst) const {
        std::vector<std::string> vErrors;
        const auto vMessages = in_Log.messages(log4cplus::ERROR_LOG_LEVEL);
        for (std::size_t ui = in_uiFirst; ui < vMessages.size(); ++ui) {
            vErrors.push_back(m_Case.normalised(vMessages[ui]));
        }
        return vErrors;
    }

    /// What the loader and the evaluator say of the script as a whole.
    void dropReportOfLoad(std::vector<std::string>& inout_vErrors) const {
        ASSERT_FALSE(inout_vErrors.empty());
        EXPECT_EQ(inout_vErrors.back(), "can't load script: " + m_Case.m_strStem);
        inout_vErrors.pop_back();
        const std::string strFailed = "failed to load script: \"" + m_Case.m_strStem + "\" from";
        if (!inout_vErrors.empty() &&
            inout_vErrors.back().compare(0, strFailed.size(), strFailed) == 0) {
            inout_vErrors.pop_back();
        }
    }

    static std::vector<std::string> distinct(const std::vector<std::string>& in_vLines) {
        std::vector<std::string> vDistinct;
        for (const std::string& strLine : in_vLines) {
            if (std::find(vDistinct.begin(), vDistinct.end(), strLine) == vDistinct.end()) {
                vDistinct.push_back(strLine);
            }
        }
        return vDistinct;
    }

    static bool isSubset(const std::vector<std::string>& in_vSome,
                         const std::vector<std::string>& in_vAll) {
        return std::all_of(in_vSome.begin(), in_vSome.end(), [&](const std::string& in_str) {
            return std::find(in_vAll.begin(), in_vAll.end(), in_str) != in_vAll.end();
        });
    }

    ScriptCase m_Case;
};

/// Where an operator fails, what stands above it keeps the value of the frame before, which a clone
/// hasn't got.
constexpr const char* ShowsFormerFrames = "operators/a_failure_stays_below_a_variable.xpr";

TEST_P(ScriptsTest, GivesWhatItSaysInEveryWay) {
    const Outcome plain = run(Ways[0]);
    compareWithScript(plain);
    for (const Way& way : Ways) {
        if (way.m_Clone == Way::Clone::BetweenFrames && GetParam() == ShowsFormerFrames) {
            continue;
        }
        SCOPED_TRACE(way.m_szName);
        compare(way, run(way), plain);
        if (HasFailure()) {
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptsTest, ::testing::ValuesIn(allScripts()), nameOf);

} // namespace
} // namespace Velmora::Testing
