#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double Pi = 3.14159265358979323846;

/// One step of `configure` of `amDemodulate` and of `sinusCorrelate`.
struct Step {
    std::string function;
    ParameterValue sampleRate;
    ParameterValue frequency;
    bool configured;
    log4cplus::LogLevel level;
    std::string message;
    bool usable;
};

void PrintTo(const Step& in_step, std::ostream* out_pStream) {
    *out_pStream << in_step.function << '<' << in_step.sampleRate << ", " << in_step.frequency
                 << '>';
}

std::string frequencyKey(const std::string& in_strFunction) {
    return in_strFunction == "amDemodulate" ? "freq" : "frequency";
}

BuiltIn makeFunction(const std::string& in_strName, const ParameterValue& in_sampleRate,
                     const ParameterValue& in_frequency) {
    BuiltIn function(in_strName);
    function.set("sampleRate", in_sampleRate);
    function.set(frequencyKey(in_strName), in_frequency);
    return function;
}

class FrequencyFunctionConfigureTest : public ::testing::TestWithParam<Step> {};

TEST_P(FrequencyFunctionConfigureTest, GivesItsResultAndItsMessage) {
    BuiltIn function =
        makeFunction(GetParam().function, GetParam().sampleRate, GetParam().frequency);
    const LogCapture log("quillmark.math.xpr.functions." + GetParam().function);
    EXPECT_EQ(function.configure(), GetParam().configured);
    if (GetParam().message.empty()) {
        EXPECT_THAT(log.lines(), IsEmpty());
    } else {
        ASSERT_EQ(log.lines().size(), 1U);
        EXPECT_EQ(log.lines()[0].message, GetParam().message);
        EXPECT_EQ(log.lines()[0].level, GetParam().level);
    }
    EXPECT_EQ(function({{0, 0}}) != "no result", GetParam().usable);
}

constexpr log4cplus::LogLevel Error = log4cplus::ERROR_LOG_LEVEL;
constexpr log4cplus::LogLevel Info = log4cplus::INFO_LOG_LEVEL;
constexpr log4cplus::LogLevel Debug = log4cplus::DEBUG_LOG_LEVEL;
const ParameterValue None;

INSTANTIATE_TEST_SUITE_P(
    AMDemodulate, FrequencyFunctionConfigureTest,
    ::testing::Values(
        Step{"amDemodulate", None, 1000, false, Error,
             "Could not find parameter sampleRate in configuration of function amDemodulate",
             false},
        Step{"amDemodulate", 8000.0F, 1000, false, Error,
             "Could not find parameter sampleRate in configuration of function amDemodulate",
             false},
        Step{"amDemodulate", 0, 1000, false, Error, "Invalid value in parameter sampleRate", false},
        Step{"amDemodulate", -1, 1000, false, Error, "Invalid value in parameter sampleRate",
             false},
        Step{"amDemodulate", 8000, None, true, Debug,
             "Could not find parameter freq in configuration of function amDemodulate", false},
        Step{"amDemodulate", 8000, "1000", true, Error,
             "Parameter 'freq' must be either an INTEGER or a FLOAT number", false},
        Step{"amDemodulate", 8000, 4001, false, Error,
             "Frequency is too high for given sample rate for function amDemodulate", false},
        Step{"amDemodulate", 8001, 4000.5F, false, Error,
             "Frequency is too high for given sample rate for function amDemodulate", false},
        Step{"amDemodulate", 8000, std::numeric_limits<float>::infinity(), false, Error,
             "Frequency is too high for given sample rate for function amDemodulate", false},
        Step{"amDemodulate", 8000, 0, false, Error, "", false},
        Step{"amDemodulate", 8000, -5.0F, false, Error, "", false},
        Step{"amDemodulate", 8000, std::numeric_limits<float>::quiet_NaN(), false, Error, "",
             false},
        Step{"amDemodulate", 8000, 4000, true, Error, "", true},
        Step{"amDemodulate", 8000, 0.25F, true, Error, "", true},
        Step{"amDemodulate", std::numeric_limits<int>::max(), 1000, true, Error, "", true}));

INSTANTIATE_TEST_SUITE_P(
    SinusCorrelate, FrequencyFunctionConfigureTest,
    ::testing::Values(
        Step{"sinusCorrelate", None, 1000, true, Info,
             "Could not find parameter sampleRate in configuration of function sinusCorrelate",
             false},
        Step{"sinusCorrelate", "8000", 1000, true, Info,
             "Could not find parameter sampleRate in configuration of function sinusCorrelate",
             false},
        Step{"sinusCorrelate", 0, 1000, false, Error, "Invalid value in parameter sampleRate",
             false},
        Step{"sinusCorrelate", 8000, None, true, Debug,
             "Could not find parameter frequency in configuration of function sinusCorrelate",
             false},
        Step{"sinusCorrelate", 8000, "1000", false, Error,
             "Parameter 'frequency' must be either an INTEGER or a FLOAT number", false},
        Step{"sinusCorrelate", 8000, 4001, false, Error,
             "Frequency is too high for given sample rate for function sinusCorrelate", false},
        Step{"sinusCorrelate", 8000, 0, false, Error, "", false},
        Step{"sinusCorrelate", 8000, std::numeric_limits<float>::quiet_NaN(), false, Error, "",
             false},
        Step{"sinusCorrelate", 8000, 4000, true, Error, "", true},
        Step{"sinusCorrelate", 8000, 440.5F, true, Error, "", true}));

class FrequencyFunctionTest : public ::testing::TestWithParam<const char*> {};

TEST_P(FrequencyFunctionTest, SaysOnEachFrameThatItIsNotConfigured) {
    BuiltIn function(GetParam());
    const LogCapture log(std::string("quillmark.math.xpr.functions.") + GetParam());
    EXPECT_EQ(function({{1}}), "no result");
    EXPECT_EQ(function({{2}}), "no result");
    const std::string strMessage =
        "Function is not configured! Please call configure() prior to calculate()";
    EXPECT_THAT(log.messages(Error), ElementsAre(strMessage, strMessage));
}

TEST_P(FrequencyFunctionTest, StaysConfiguredWhenALaterConfigurationFails) {
    BuiltIn function = makeFunction(GetParam(), 8000, 1000);
    ASSERT_TRUE(function.configure());
    const std::string strBefore = function({{1, 0.5, -1, 2, 0, 3, 1, 1}});
    for (const ParameterValue& frequency : {ParameterValue(4001), ParameterValue(-1)}) {
        function.set(frequencyKey(GetParam()), frequency);
        EXPECT_FALSE(function.configure());
        EXPECT_EQ(function({{1, 0.5, -1, 2, 0, 3, 1, 1}}), strBefore);
    }
}

TEST_P(FrequencyFunctionTest, ResetKeepsTheConfiguration) {
    BuiltIn function = makeFunction(GetParam(), 8000, 1000);
    ASSERT_TRUE(function.configure());
    EXPECT_TRUE(function.reset());
    EXPECT_NE(function({{1, 2}}), "no result");
}

TEST_P(FrequencyFunctionTest, ACopyIsConfiguredAsItsSource) {
    BuiltIn function = makeFunction(GetParam(), 8000, 1000);
    ASSERT_TRUE(function.configure());
    EXPECT_EQ(function.copy()({{1, 0, 2, 5}}), function({{1, 0, 2, 5}}));
}

INSTANTIATE_TEST_SUITE_P(Both, FrequencyFunctionTest,
                         ::testing::Values("amDemodulate", "sinusCorrelate"),
                         [](const auto& in_info) { return std::string(in_info.param); });

Values makeTone(double in_dFrequency, double in_dAmplitude, std::size_t in_uiCount) {
    Values tone;
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        tone.push_back(in_dAmplitude * std::sin(2 * Pi * in_dFrequency * double(i) / 8000 + 0.4));
    }
    return tone;
}

TEST(FunctionAMDemodulateTest, GivesTheEnvelopeSampleBySample) {
    BuiltIn demodulate = makeFunction("amDemodulate", 8000, 1000);
    ASSERT_TRUE(demodulate.configure());
    demodulate.feed({makeTone(1000, 0.7, 160)});
    const Math::DoubleVector* const pEnvelope = demodulate.evaluate();
    ASSERT_NE(pEnvelope, nullptr);
    ASSERT_EQ(pEnvelope->size(), 160U);
    for (const double value : *pEnvelope) {
        EXPECT_NEAR(value, 0.7, 0.01);
    }
    EXPECT_EQ(demodulate({{}}), "[]");
}

TEST(FunctionSinusCorrelateTest, TellsTheToneFromAnother) {
    BuiltIn correlate = makeFunction("sinusCorrelate", 8000, 1000);
    ASSERT_TRUE(correlate.configure());
    correlate.feed({makeTone(1000, 0.1, 100)});
    EXPECT_NEAR((*correlate.evaluate())[0], 1.0, 1e-12);
    correlate.feed({makeTone(2000, 0.9, 80)});
    EXPECT_NEAR((*correlate.evaluate())[0], 0.0, 1e-12);
    EXPECT_EQ(correlate({{}}), "[0]");
    EXPECT_EQ(correlate({{0, 0}}), "[0]");
}

} // namespace
} // namespace Velmora::Testing
