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

    /// That value eight times.
    [[gnu::always_inline]] static Lanes filledWith(double in_dValue) {
        Lanes result;
        for (Register& part : result.m_parts) {
            part = Register{} + in_dValue;
        }
        return result;
    }

    [[gnu::always_inline]] void add(const Lanes& in_other) {
        for (std::size_t i = 0; i < parts; ++i) {
            m_parts[i] += in_other.m_parts[i];
        }
    }

    /// The same as `add`, to the bit, but for which of two NaNs it is. Where eight ones fill a
    /// register, the processor multiplies by them while it adds, which takes as long but is done
    /// where products are made: the part that sums and compares has time for others.
    [[gnu::always_inline]] void addMultiplied(const Lanes& in_other,
                                              [[maybe_unused]] const Lanes& in_ones) {
// Clang takes the registers' width from the command line, and not from the function around it.
#if defined(__x86_64__) && !defined(__clang__)
        if constexpr (Bytes == 64) {
            Register sum = m_parts[0];
            asm("vfmadd231pd {%2, %1, %0|%0, %1, %2}"
                : "+v"(sum)
                : "v"(in_other.m_parts[0]), "v"(in_ones.m_parts[0]));
            m_parts[0] = sum;
            return;
        }
#endif
        add(in_other);
    }

    [[gnu::always_inline]] void subtract(const Lanes& in_other) {
        for (std::size_t i = 0; i < parts; ++i) {
            m_parts[i] -= in_other.m_parts[i];
        }
    }

    [[gnu::always_inline]] void multiply(const Lanes& in_other) {
        for (std::size_t i = 0; i < parts; ++i) {
            m_parts[i] *= in_other.m_parts[i];
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

    /// The eight values there, the last one first.
    [[gnu::always_inline]] static Lanes reversed(const double* in_pValues) {
        const Lanes forward(in_pValues);
        Lanes result;
        for (std::size_t i = 0; i < parts; ++i) {
            const auto& part = forward.m_parts[parts - 1 - i];
            if constexpr (parts == 4) {
                result.m_parts[i] = __builtin_shufflevector(part, part, 1, 0);
            } else if constexpr (parts == 2) {
                result.m_parts[i] = __builtin_shufflevector(part, part, 3, 2, 1, 0);
            } else {
                result.m_parts[i] = __builtin_shufflevector(part, part, 7, 6, 5, 4, 3, 2, 1, 0);
            }
        }
        return result;
    }

    /// The sum of the eight.
    [[gnu::always_inline]] double total() const {
        return fold([](auto& inout_part, const auto& in_other) { inout_part += in_other; });
    }

    /// The largest and the smallest of the eight, all of which are numbers.
    [[gnu::always_inline]] double largest() const {
        return fold([](auto& inout_part, const auto& in_other) {
            inout_part = in_other > inout_part ? in_other : inout_part;
        });
    }
    [[gnu::always_inline]] double smallest() const {
        return fold([](auto& inout_part, const auto& in_other) {
            inout_part = in_other < inout_part ? in_other : inout_part;
        });
    }

private:
    using Register [[gnu::vector_size(Bytes)]] = double;
    using Four [[gnu::vector_size(32)]] = double;
    using Two [[gnu::vector_size(16)]] = double;

    static constexpr std::size_t width = Bytes / sizeof(double);
    static constexpr std::size_t parts = count / width;

    /// Joins the eight, halves first: lane i and lane i + 4, then i + 2, then i + 1. Without a way
    /// through memory, which takes longer than the operations.
    template <class Operation>
    [[gnu::always_inline]] double fold(Operation in_join) const {
        Two two;
        Two other;
        if constexpr (parts == 4) {
            two = m_parts[0];
            in_join(two, m_parts[2]);
            other = m_parts[1];
            in_join(other, m_parts[3]);
        } else {
            Four four;
            Four upper;
            if constexpr (parts == 2) {
                four = m_parts[0];
                upper = m_parts[1];
            } else {
                four = __builtin_shufflevector(m_parts[0], m_parts[0], 0, 1, 2, 3);
                upper = __builtin_shufflevector(m_parts[0], m_parts[0], 4, 5, 6, 7);
            }
            in_join(four, upper);
            two = __builtin_shufflevector(four, four, 0, 1);
            other = __builtin_shufflevector(four, four, 2, 3);
        }
        in_join(two, other);
        double result = two[0];
        in_join(result, two[1]);
        return result;
    }

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
