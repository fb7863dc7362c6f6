#include "math/src/Extremes.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/math/DoubleVector.h>
#include <velmora/math/MaxFeature.h>
#include <velmora/math/MinFeature.h>

namespace Velmora::Math {
namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

template <class Feature>
double compute(const std::vector<double>& in_vValues) {
    DoubleVector vInput;
    for (const double dValue : in_vValues) {
        vInput.push_back(dValue);
    }
    DoubleVector vResult;
    EXPECT_TRUE(Feature().compute(vInput, vResult));
    return vResult.at(0);
}

TEST(ExtremesTest, OrderIsThatOfTheValues) {
    const double values[] = {-Infinity, -std::numeric_limits<double>::max(),        -2.0,
                             -1.0,      -std::numeric_limits<double>::denorm_min(), -0.0,
                             0.0,       std::numeric_limits<double>::denorm_min(),  1.0,
                             2.0,       std::numeric_limits<double>::max(),         Infinity};
    for (std::size_t ui = 1; ui != std::size(values); ++ui) {
        EXPECT_LT(orderOf(values[ui - 1]), orderOf(values[ui])) << values[ui];
        EXPECT_EQ(valueOf(orderOf(values[ui])), values[ui]);
        EXPECT_EQ(std::signbit(valueOf(orderOf(values[ui]))), std::signbit(values[ui]));
    }
    EXPECT_GT(orderOf(Nan), orderOf(Infinity));
    EXPECT_LT(orderOf(-Nan), orderOf(-Infinity));
}

TEST(ExtremesTest, ExtremesStandAnywhere) {
    for (std::size_t uiSize = 1; uiSize != 70; ++uiSize) {
        for (std::size_t uiPlace = 0; uiPlace != uiSize; ++uiPlace) {
            std::vector<double> vValues(uiSize, 1.5);
            vValues[uiPlace] = 7.25;
            EXPECT_EQ(compute<MaxFeature>(vValues), 7.25) << uiSize << ' ' << uiPlace;
            vValues[uiPlace] = -7.25;
            EXPECT_EQ(compute<MinFeature>(vValues), -7.25) << uiSize << ' ' << uiPlace;
        }
    }
}

TEST(ExtremesTest, TheFirstThatIsNoNumberComesOut) {
    for (const double dNan : {Nan, -Nan}) {
        std::vector<double> vValues(40, 3.0);
        vValues[17] = dNan;
        vValues[31] = -dNan;
        for (const double dResult : {compute<MaxFeature>(vValues), compute<MinFeature>(vValues)}) {
            EXPECT_TRUE(std::isnan(dResult));
            EXPECT_EQ(std::signbit(dResult), std::signbit(dNan));
        }
    }
}

TEST(ExtremesTest, OfZerosThePositiveOneIsLarger) {
    for (const bool bPositiveFirst : {false, true}) {
        std::vector<double> vZeros(33, bPositiveFirst ? 0.0 : -0.0);
        vZeros.back() = bPositiveFirst ? -0.0 : 0.0;
        EXPECT_FALSE(std::signbit(compute<MaxFeature>(vZeros)));
        EXPECT_TRUE(std::signbit(compute<MinFeature>(vZeros)));
    }
    EXPECT_TRUE(std::signbit(compute<MaxFeature>(std::vector<double>(33, -0.0))));
    EXPECT_FALSE(std::signbit(compute<MinFeature>(std::vector<double>(33, 0.0))));
}

} // namespace
} // namespace Velmora::Math
