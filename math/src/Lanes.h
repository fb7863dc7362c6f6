#pragma once

#include <cstddef>
#include <cstring>

namespace Velmora::Math {

/// Eight doubles side by side, kept in registers of that many bytes: 16, 32 or 64.
///
/// Whatever the width, an operation makes the same of each of the eight. Compilers turn loops over
/// arrays into such registers as well, but not the ends of the loops.
template <std::size_t Bytes>
class Lanes {
public:
    static constexpr std::size_t count = 8;

    /// Zeros.
    [[gnu::always_inline]] Lanes() {
        for (Register& part : m_parts) {
            part = Register{};
        }
    }

    /// The eight values there.
    [[gnu::always_inline]] explicit Lanes(const double* in_pValues) {
        for (std::size_t i = 0; i < parts; ++i) {
            std::memcpy(&m_parts[i], in_pValues + i * width, sizeof(Register));
        }
    }

    [[gnu::always_inline]] void add(const Lanes& in_other) {
        for (std::size_t i = 0; i < parts; ++i) {
            m_parts[i] += in_other.m_parts[i];
        }
    }

    [[gnu::always_inline]] void subtract(const Lanes& in_other) {
        for (std::size_t i = 0; i < parts; ++i) {
            m_parts[i] -= in_other.m_parts[i];
        }
    }

    [[gnu::always_inline]] void multiply(double in_dFactor) {
        for (Register& part : m_parts) {
            part *= in_dFactor;
        }
    }

    [[gnu::always_inline]] void divide(double in_dDivisor) {
        for (Register& part : m_parts) {
            part /= in_dDivisor;
        }
    }

    [[gnu::always_inline]] void square() {
        for (Register& part : m_parts) {
            part *= part;
        }
    }

    /// The larger ones; what isn't a number is passed by.
    [[gnu::always_inline]] void raiseTo(const Lanes& in_other) {
        for (std::size_t i = 0; i < parts; ++i) {
            m_parts[i] = in_other.m_parts[i] > m_parts[i] ? in_other.m_parts[i] : m_parts[i];
        }
    }

    /// The smaller ones.
    [[gnu::always_inline]] void lowerTo(const Lanes& in_other) {
        for (std::size_t i = 0; i < parts; ++i) {
            m_parts[i] = in_other.m_parts[i] < m_parts[i] ? in_other.m_parts[i] : m_parts[i];
        }
    }

    [[gnu::always_inline]] void store(double* out_pValues) const {
        for (std::size_t i = 0; i < parts; ++i) {
            std::memcpy(out_pValues + i * width, &m_parts[i], sizeof(Register));
        }
    }

    /// The sum of the eight, halves first: lane i and lane i + 4, then i + 2, then i + 1.
    [[gnu::always_inline]] double total() const {
        double value[count];
        store(value);
        for (std::size_t half = count / 2; half != 0; half /= 2) {
            for (std::size_t i = 0; i < half; ++i) {
                value[i] += value[i + half];
            }
        }
        return value[0];
    }

private:
    using Register [[gnu::vector_size(Bytes)]] = double;

    static constexpr std::size_t width = Bytes / sizeof(double);
    static constexpr std::size_t parts = count / width;

    Register m_parts[parts];
};

/// One double, with the operations of eight: for the ends of loops.
class Lane {
public:
    [[gnu::always_inline]] explicit Lane(const double* in_pValue) : m_dValue(*in_pValue) {}

    [[gnu::always_inline]] void add(const Lane& in_other) { m_dValue += in_other.m_dValue; }
    [[gnu::always_inline]] void subtract(const Lane& in_other) { m_dValue -= in_other.m_dValue; }
    [[gnu::always_inline]] void multiply(double in_dFactor) { m_dValue *= in_dFactor; }
    [[gnu::always_inline]] void divide(double in_dDivisor) { m_dValue /= in_dDivisor; }
    [[gnu::always_inline]] void store(double* out_pValue) const { *out_pValue = m_dValue; }

private:
    double m_dValue;
};

} // namespace Velmora::Math
