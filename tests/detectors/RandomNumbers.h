#pragma once

#include <cstdint>
#include <random>

namespace Velmora::Testing {

/// Seeded random numbers that are the same with every standard library.
class RandomNumbers {
public:
    explicit RandomNumbers(std::uint64_t in_uiSeed) : m_Generator(in_uiSeed) {}

    /// From the first number up to the last.
    double between(double in_dFirst, double in_dLast) {
        const double dShare = static_cast<double>(m_Generator() >> 11) * 0x1p-53;
        return in_dFirst + dShare * (in_dLast - in_dFirst);
    }

    /// From 0 up to but without the count.
    std::size_t below(std::size_t in_uiCount) { return m_Generator() % in_uiCount; }

private:
    std::mt19937_64 m_Generator;
};

} // namespace Velmora::Testing
