#pragma once

#include <cstddef>

#include <velmora/math/ScaledSum.h>

#include "Lanes.h"

namespace Velmora::Math {

/// The forms by number.
constexpr std::size_t ScaledSumForms = 24;

constexpr ScaledSum::Form scaledSumForm(std::size_t in_uiIndex) {
    ScaledSum::Form form;
    form.m_bSubtract = in_uiIndex % 2 != 0;
    form.m_bScaleLeft = in_uiIndex / 2 % 2 != 0;
    form.m_bScaleRight = in_uiIndex / 4 % 2 != 0;
    form.m_eBehind = static_cast<ScaledSum::Scale>(in_uiIndex / 8);
    return form;
}

constexpr std::size_t indexOf(const ScaledSum::Form& in_Form) {
    return (in_Form.m_bSubtract ? 1U : 0U) + (in_Form.m_bScaleLeft ? 2U : 0U) +
           (in_Form.m_bScaleRight ? 4U : 0U) + 8 * static_cast<std::size_t>(in_Form.m_eBehind);
}

/// What one step of the loop reads and makes: a number, or eight side by side.
template <std::size_t uiForm, class Values>
[[gnu::always_inline]] inline void computeScaledSum(const ScaledSum::Operands& in_Operands,
                                                    std::size_t in_uiPlace) {
    constexpr ScaledSum::Form form = scaledSumForm(uiForm);
    // All is read ahead of what is made, which may stand at the same place.
    Values left(in_Operands.m_pLeft + in_uiPlace);
    Values right(in_Operands.m_pRight + in_uiPlace);
    if constexpr (form.m_bScaleLeft) {
        left.multiply(in_Operands.m_dLeftFactor);
        left.store(in_Operands.m_pScaledLeft + in_uiPlace);
    }
    if constexpr (form.m_bScaleRight) {
        right.multiply(in_Operands.m_dRightFactor);
        right.store(in_Operands.m_pScaledRight + in_uiPlace);
    }
    if constexpr (form.m_bSubtract) {
        left.subtract(right);
    } else {
        left.add(right);
    }
    left.store(in_Operands.m_pSum + in_uiPlace);
    if constexpr (form.m_eBehind == ScaledSum::Scale::Multiply) {
        left.multiply(in_Operands.m_dBehind);
    }
    if constexpr (form.m_eBehind == ScaledSum::Scale::Divide) {
        left.divide(in_Operands.m_dBehind);
    }
    if constexpr (form.m_eBehind != ScaledSum::Scale::None) {
        left.store(in_Operands.m_pScaledSum + in_uiPlace);
    }
}

/// The loop, compiled for the processor of the function that it is inlined into.
template <std::size_t uiForm, std::size_t uiBytes>
[[gnu::always_inline]] inline void computeScaledSums(const ScaledSum::Operands& in_Operands) {
    using Eight = Lanes<uiBytes>;
    // What is made could be the operands themselves, for all that the compiler knows.
    const ScaledSum::Operands operands = in_Operands;
    std::size_t uiPlace = 0;
    for (; uiPlace + Eight::count <= operands.m_uiCount; uiPlace += Eight::count) {
        computeScaledSum<uiForm, Eight>(operands, uiPlace);
    }
    for (; uiPlace != operands.m_uiCount; ++uiPlace) {
        computeScaledSum<uiForm, Lane>(operands, uiPlace);
    }
}

} // namespace Velmora::Math
