#pragma once

#include <cstddef>
#include <cstring>

namespace Velmora::Benchmarks {

/// As wide as the widest registers; the compiler splits it where they are narrower.
typedef double Wide __attribute__((vector_size(64), may_alias));

constexpr std::size_t WIDTH = sizeof(Wide) / sizeof(double);

static inline Wide load(const double* in_pX) {
    Wide value;
    std::memcpy(&value, in_pX, sizeof value);
    return value;
}

static inline double addUp(const Wide& in_Value) {
    double dSum = 0.0;
    for (std::size_t i = 0; i != WIDTH; ++i) {
        dSum += in_Value[i];
    }
    return dSum;
}

} // namespace Velmora::Benchmarks
