#pragma once

#include <velmora/ParameterTrie.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/SignalFeature.h>
#include <velmora/math/SignalFeatureWithParameters.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Velmora::Math::Testing {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

using Values = std::vector<double>;

inline DoubleVector vectorOf(const Values& in_values) {
    DoubleVector result;
    result.insert(result.end(), in_values.data(), in_values.data() + in_values.size());
    return result;
}

inline Values valuesOf(const DoubleVector& in_vector) {
    return Values(in_vector.begin(), in_vector.end());
}

/// The bits of each value, with one form for all NaNs: tells the zeros apart and NaNs not.
inline std::vector<std::uint64_t> bitsOf(const Values& in_values) {
    std::vector<std::uint64_t> result;
    for (const double value : in_values) {
        const double shown = value == value ? value : nan;
        std::uint64_t bits = 0;
        std::memcpy(&bits, &shown, sizeof(bits));
        result.push_back(bits);
    }
    return result;
}

/// Matches the same bits in every place, any NaN for a NaN.
MATCHER_P(HasValues, expected, ::testing::PrintToString(expected)) {
    return bitsOf(arg) == bitsOf(expected);
}

/// The result for one frame, which the feature must be able to compute.
inline Values resultOf(SignalFeature& inout_feature, const Values& in_frame) {
    DoubleVector result;
    EXPECT_TRUE(inout_feature.compute(vectorOf(in_frame), result));
    return valuesOf(result);
}

/// The results for consecutive frames.
inline std::vector<Values> resultsOf(SignalFeature& inout_feature,
                                     const std::vector<Values>& in_frames) {
    std::vector<Values> results;
    for (const Values& frame : in_frames) {
        results.push_back(resultOf(inout_feature, frame));
    }
    return results;
}

/// The first values of the results for consecutive frames of one value each.
inline Values firstValuesOf(SignalFeature& inout_feature, const Values& in_frames) {
    Values results;
    for (const double value : in_frames) {
        results.push_back(resultOf(inout_feature, {value}).at(0));
    }
    return results;
}

/// Expects that the feature refuses the frame and leaves the output alone.
inline void expectRefuses(SignalFeature& inout_feature, const Values& in_frame) {
    DoubleVector result{42.0};
    EXPECT_FALSE(inout_feature.compute(vectorOf(in_frame), result));
    EXPECT_THAT(valuesOf(result), ::testing::ElementsAre(42.0));
}

using Parameters = std::initializer_list<std::pair<const char*, ParameterValue>>;

inline bool configure(SignalFeatureWithParameters& inout_feature, Parameters in_parameters) {
    ParameterTrie configuration;
    for (const auto& [key, value] : in_parameters) {
        configuration.setParameter(key, value);
    }
    return inout_feature.configure(configuration);
}

} // namespace Velmora::Math::Testing
