#include "Result.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>

#include <velmora/math/DoubleVector.h>

namespace Velmora::Fuzz {

namespace {

bool haveSameBits(double in_dA, double in_dB) {
    return std::memcmp(&in_dA, &in_dB, sizeof in_dA) == 0 ||
           (std::isnan(in_dA) && std::isnan(in_dB));
}

} // namespace

Result Result::of(Math::Xpr::Expression& inout_Expression) {
    Result result;
    Math::DoubleVector vValue;
    result.m_bSuccess = inout_Expression.evaluate(vValue);
    result.m_vElements.assign(vValue.begin(), vValue.end());
    return result;
}

bool Result::operator==(const Result& in_Other) const {
    if (m_bSuccess != in_Other.m_bSuccess || m_vElements.size() != in_Other.m_vElements.size()) {
        return false;
    }
    // At once as a rule, as results can be long.
    return m_vElements.empty() ||
           std::memcmp(m_vElements.data(), in_Other.m_vElements.data(),
                       m_vElements.size() * sizeof(double)) == 0 ||
           std::equal(m_vElements.begin(), m_vElements.end(), in_Other.m_vElements.begin(),
                      in_Other.m_vElements.end(), haveSameBits);
}

void check(bool in_bHolds, const char* in_szWhat) {
    if (!in_bHolds) {
        std::cerr << "This doesn't hold: " << in_szWhat << '\n';
        std::abort();
    }
}

float toFloat(double in_dNumber) {
    constexpr float Largest = std::numeric_limits<float>::max();
    if (std::abs(in_dNumber) <= static_cast<double>(Largest) || std::isnan(in_dNumber)) {
        return static_cast<float>(in_dNumber);
    }
    return std::copysign(std::numeric_limits<float>::infinity(), in_dNumber > 0.0 ? 1.0F : -1.0F);
}

} // namespace Velmora::Fuzz
