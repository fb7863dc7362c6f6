#include "math/FeatureTesting.h"

#include <velmora/Resettable.h>
#include <velmora/math/AbsFeature.h>
#include <velmora/math/DebounceFeature.h>
#include <velmora/math/DebounceOnOffFeature.h>
#include <velmora/math/DeltaFeature.h>
#include <velmora/math/IndexOfMaxFeature.h>
#include <velmora/math/LogFeature.h>
#include <velmora/math/MaxFeature.h>
#include <velmora/math/MinFeature.h>
#include <velmora/math/SignalEnergyFeature.h>
#include <velmora/math/SlidingWindowFeature.h>
#include <velmora/math/SumFeature.h>
#include <velmora/math/TappedDelayFeature.h>

#include <functional>
#include <memory>

#include "support/AllocationCounter.h"

namespace Velmora::Math {
namespace {

using namespace Testing;
using ::testing::ElementsAre;

TEST(SignalFeatureTest, TypesHaveTheirNumbersAndTexts) {
    const struct {
        int number;
        SignalFeature::FeatureType type;
        const char* text;
    } cases[] = {{17, SignalFeature::SlidingWindow, "SlidingWindow"},
                 {18, SignalFeature::TappedDelay, "TappedDelay"},
                 {19, SignalFeature::Debounce, "Debounce"},
                 {21, SignalFeature::DebounceOnOff, "DebounceOnOff"}};
    for (const auto& each : cases) {
        EXPECT_EQ(static_cast<int>(each.type), each.number);
        EXPECT_STREQ(SignalFeature::getFeatureTypeString(each.type), each.text);
    }
}

TEST(SignalFeatureTest, OtherTypesHaveAnEmptyText) {
    for (const int number : {0, 16, 20, 22, -1}) {
        const auto type = static_cast<SignalFeature::FeatureType>(number);
        EXPECT_STREQ(SignalFeature::getFeatureTypeString(type), "");
    }
}

/// What every feature has in common, looked at for each of them, configured as listed.
struct FeatureCase {
    std::string name;
    std::function<std::unique_ptr<SignalFeature>()> make;
};

std::ostream& operator<<(std::ostream& inout_stream, const FeatureCase& in_case) {
    return inout_stream << in_case.name;
}

template <class Feature>
FeatureCase caseOf(const char* in_szName) {
    return {in_szName, [] { return std::make_unique<Feature>(); }};
}

template <class Feature>
FeatureCase caseOf(const char* in_szName,
                   std::vector<std::pair<const char*, ParameterValue>> in_parameters) {
    return {in_szName, [in_parameters] {
                auto feature = std::make_unique<Feature>();
                ParameterTrie configuration;
                for (const auto& [key, value] : in_parameters) {
                    configuration.setParameter(key, value);
                }
                EXPECT_TRUE(feature->configure(configuration));
                return feature;
            }};
}

class EveryFeatureTest : public ::testing::TestWithParam<FeatureCase> {
protected:
    // Frames that leave a trace in every memory: windows fill and slide, debouncers count.
    const std::vector<Values> m_before{{1.0, 2.0, 3.0}, {0.0, 5.0, 1.0}, {0.0, 5.0, 1.0}};
    const std::vector<Values> m_after{
        {0.0, 5.0, 1.0}, {4.0, 4.0, 4.0}, {4.0, 4.0, 4.0}, {4.0, 4.0, 4.0}};
};

TEST_P(EveryFeatureTest, CloneGoesOnWhereItsSourceStood) {
    const auto source = GetParam().make();
    resultsOf(*source, m_before);
    const std::unique_ptr<Cloneable> clone(source->clone());
    auto* const feature = dynamic_cast<SignalFeature*>(clone.get());
    ASSERT_NE(feature, nullptr);
    EXPECT_EQ(typeid(*feature), typeid(*source));

    const std::vector<Values> resultsOfClone = resultsOf(*feature, m_after);
    EXPECT_EQ(resultsOfClone, resultsOf(*source, m_after));
}

TEST_P(EveryFeatureTest, ResetOfACloneLeavesItsSourceAsItWas) {
    const auto untouched = GetParam().make();
    const auto source = GetParam().make();
    resultsOf(*untouched, m_before);
    resultsOf(*source, m_before);
    const std::unique_ptr<Cloneable> clone(source->clone());
    if (auto* const resettable = dynamic_cast<Resettable*>(clone.get())) {
        EXPECT_TRUE(resettable->reset());
    }
    EXPECT_EQ(resultsOf(*source, m_after), resultsOf(*untouched, m_after));
}

TEST_P(EveryFeatureTest, ResetReturnsToTheStateAfterConfiguration) {
    const auto feature = GetParam().make();
    const auto fresh = GetParam().make();
    resultsOf(*feature, m_before);
    if (auto* const resettable = dynamic_cast<Resettable*>(feature.get())) {
        EXPECT_TRUE(resettable->reset());
    }
    EXPECT_EQ(resultsOf(*feature, m_after), resultsOf(*fresh, m_after));
}

TEST_P(EveryFeatureTest, ResultReplacesWhatTheOutputHeld) {
    const auto feature = GetParam().make();
    const auto fresh = GetParam().make();
    DoubleVector result = vectorOf(Values(100, 7.0));
    ASSERT_TRUE(feature->compute(vectorOf({1.0, 2.0}), result));
    EXPECT_EQ(valuesOf(result), resultOf(*fresh, {1.0, 2.0}));
}

TEST_P(EveryFeatureTest, OutputMayBeTheInput) {
    const auto feature = GetParam().make();
    const auto reference = GetParam().make();
    for (const Values& frame : m_before) {
        DoubleVector vector = vectorOf(frame);
        ASSERT_TRUE(feature->compute(vector, vector));
        EXPECT_EQ(valuesOf(vector), resultOf(*reference, frame));
    }
}

TEST_P(EveryFeatureTest, NothingIsAllocatedOnceWarm) {
    const auto feature = GetParam().make();
    const auto compute = [&](int frames, int seed) {
        DoubleVector frame = vectorOf(Values(16, 0.0));
        static DoubleVector result;
        bool ok = true;
        const Velmora::Testing::AllocationCounter counter;
        for (int i = 0; i < frames; ++i) {
            for (double& value : frame) {
                value = static_cast<double>((i / 3 + seed) % 5);
            }
            ok = feature->compute(frame, result) && ok;
        }
        const std::size_t allocations = counter.allocations();
        EXPECT_TRUE(ok);
        return allocations;
    };
    compute(10, 0);
    EXPECT_EQ(compute(5000, 1), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Features, EveryFeatureTest,
    ::testing::Values(
        caseOf<SumFeature>("Sum"), caseOf<AbsFeature>("Abs"), caseOf<MinFeature>("Min"),
        caseOf<MaxFeature>("Max"), caseOf<IndexOfMaxFeature>("IndexOfMax"),
        caseOf<LogFeature>("Log"), caseOf<DeltaFeature>("Delta"),
        caseOf<SignalEnergyFeature>("SignalEnergy", {{"signalfeature.SampleRate", 8000}}),
        caseOf<SlidingWindowFeature>("SlidingWindow", {{"slidingwindow.WindowSize", 50}}),
        caseOf<TappedDelayFeature>("TappedDelay", {{"tappeddelay.TapeSize", 50},
                                                   {"tappeddelay.IncludeUsedTapeSizeInOutput", 1},
                                                   {"tappeddelay.PaddingValues", "-1 -2"}}),
        caseOf<DebounceFeature>("Debounce", {{"debounce.DebounceValue", 3}}),
        caseOf<DebounceOnOffFeature>("DebounceOnOff", {{"debounceonoff.DebounceOnValue", 3},
                                                       {"debounceonoff.DebounceOffValue", 2}})),
    [](const auto& each) { return each.param.name; });

/// What the features with parameters have in common.
template <class Feature>
class ParameterisedFeatureTest : public ::testing::Test {};

using ParameterisedFeatures =
    ::testing::Types<SignalEnergyFeature, SlidingWindowFeature, TappedDelayFeature, DebounceFeature,
                     DebounceOnOffFeature>;
TYPED_TEST_SUITE(ParameterisedFeatureTest, ParameterisedFeatures);

TYPED_TEST(ParameterisedFeatureTest, ComputesNothingBeforeItIsConfigured) {
    TypeParam feature;
    expectRefuses(feature, {1.0});
    expectRefuses(feature, {});
}

TYPED_TEST(ParameterisedFeatureTest, ConfiguresWithoutParametersAndStaysUnconfigured) {
    TypeParam feature;
    EXPECT_TRUE(configure(feature, {}));
    expectRefuses(feature, {1.0});
}

TYPED_TEST(ParameterisedFeatureTest, EmptyParametersCountAsMissing) {
    TypeParam feature;
    EXPECT_TRUE(configure(feature, {{"signalfeature.SampleRate", ParameterValue()},
                                    {"slidingwindow.WindowSize", ParameterValue()},
                                    {"tappeddelay.TapeSize", ParameterValue()},
                                    {"debounce.DebounceValue", ParameterValue()},
                                    {"debounceonoff.DebounceOnValue", ParameterValue()},
                                    {"debounceonoff.DebounceOffValue", ParameterValue()}}));
    expectRefuses(feature, {1.0});
}

TYPED_TEST(ParameterisedFeatureTest, ParametersOfOtherFeaturesAreNotRead) {
    TypeParam feature;
    EXPECT_TRUE(configure(feature, {{"SampleRate", 8000},
                                    {"WindowSize", 5},
                                    {"SlidingWindow.WindowSize", 5},
                                    {"tappeddelay.WindowSize", 5},
                                    {"slidingwindow.TapeSize", 5},
                                    {"debounce.DebounceOnValue", 5},
                                    {"debounceonoff.DebounceValue", 5}}));
    expectRefuses(feature, {1.0});
}

} // namespace
} // namespace Velmora::Math
