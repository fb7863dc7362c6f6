#pragma once

#include <velmora/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Velmora::Math {

/// Numbers that are each made of all elements of one vector, in one pass over it.
///
/// Each has the bits that it has alone: those of SumFeature, MaxFeature, MinFeature and
/// DoubleVector::averagePower, but for which NaN it is where there are several. In one pass they
/// read less from memory, and a processor adds for one while it compares for the other.
///
/// The object refers to a loop that suits the processor and owns nothing. Any thread may use it.
class VELMORA_EXPORT Reductions {
public:
    /// What can be made of the elements x(0) to x(n - 1).
    enum class Kind : std::uint8_t {
        /// x(0) + ... + x(n - 1)
        Sum,
        /// (x(0)^2 + ... + x(n - 1)^2) / n
        AveragePower,
        Max,
        Min
    };
    static constexpr std::size_t KindCount = 4;

    /// The number of each kind, in the order of the kinds.
    using Results = std::array<double, KindCount>;

    /// Makes nothing yet.
    Reductions();

    /// Has this one made, too. False if it is made already.
    bool add(Kind in_eKind);

    /// Makes the numbers of the elements from `in_pFirst` to the one before `in_pLast`, of which
    /// there is one at least. The results of other kinds stay as they are.
    void compute(const double* in_pFirst, const double* in_pLast, Results& out_Results) const {
        m_pLoop(in_pFirst, in_pLast, out_Results);
    }

private:
    std::size_t m_uiKinds = 0;
    void (*m_pLoop)(const double*, const double*, Results&);
};

} // namespace Velmora::Math
