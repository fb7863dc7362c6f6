#pragma once

#include <velmora/Export.h>

#include <cstddef>

namespace Velmora::Math {

/// A sum or a difference of two vectors, whose sides may be scaled ahead of it and whose result
/// behind it: up to four operations in one pass over the vectors.
///
/// Each operation leaves its result, with the bits that the operations of DoubleVector have, one
/// after the other. In one pass they read less from memory.
///
/// The object refers to a loop that suits the processor and owns nothing. Any thread may use it.
class VELMORA_EXPORT ScaledSum {
public:
    /// What can be done with a vector and a number.
    enum class Scale { None, Multiply, Divide };

    /// Which operations there are.
    struct Form {
        /// A difference, in place of a sum?
        bool m_bSubtract = false;
        /// Are the sides multiplied by a factor ahead of it?
        bool m_bScaleLeft = false;
        bool m_bScaleRight = false;
        /// What is done with the result.
        Scale m_eBehind = Scale::None;
    };

    /// Where the operations find what they read, and leave what they make. What belongs to an
    /// operation that the form doesn't have isn't looked at.
    struct Operands {
        /// As many values as the count says, in both.
        const double* m_pLeft = nullptr;
        const double* m_pRight = nullptr;
        double m_dLeftFactor = 1.0;
        double m_dRightFactor = 1.0;
        /// What the result is multiplied or divided by.
        double m_dBehind = 1.0;
        /// Room for as many values. A result may stand where something is read that no later
        /// operation reads; nothing may overlap otherwise.
        double* m_pScaledLeft = nullptr;
        double* m_pScaledRight = nullptr;
        double* m_pSum = nullptr;
        double* m_pScaledSum = nullptr;
        std::size_t m_uiCount = 0;
    };

    /// The loop for those operations.
    explicit ScaledSum(const Form& in_Form);

    /// Carries the operations out, element by element.
    void compute(const Operands& in_Operands) const { m_pLoop(in_Operands); }

private:
    void (*m_pLoop)(const Operands&);
};

} // namespace Velmora::Math
