#pragma once

#include <cstddef>
#include <vector>

#include <velmora/math/ScaledSum.h>

#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

/// Operators on vectors that one pass over the frame computes: a sum or a difference, what
/// multiplies its sides by numbers, and what scales its result. Each has its result in its place
/// then.
///
/// It is taken where its operands have the shapes that they had when it was found.
class SealedPlan::SumJoint {
public:
    /// The operators that can be joined of those from that place on, of operators that wait in the
    /// order of the frame. Returns their number, 0 for none.
    std::size_t find(SealedPlan& inout_Plan, const std::vector<Index>& in_vPending,
                     std::size_t in_uiFirst);

    /// Has a node of the host's evaluated one of them on the way?
    bool isBegun(const SealedPlan& in_Plan) const;

    /// Computes them. False, and nothing has happened, if the operands or the results haven't the
    /// shapes for it.
    bool compute(SealedPlan& inout_Plan) const;

    /// Computes those that aren't valid, in their order. Returns the node that failed, or
    /// `PassedOver`.
    Index computeOneByOne(SealedPlan& inout_Plan) const;

private:
    /// An operator, where its result stands, and what it scales by if it does. Not every joint has
    /// all of them.
    struct Part {
        Index m_uiNode = PassedOver;
        Step* m_pStep = nullptr;
        DoubleVector* m_pResult = nullptr;
        const Step* m_pFactor = nullptr;

        explicit operator bool() const { return m_pStep != nullptr; }
    };

    /// An operator that scales, what it reads, and where the value of that comes from.
    struct Scaling {
        Part m_Part;
        const Step* m_pVector = nullptr;
        const Step* m_pSource = nullptr;
    };

    bool findSum(SealedPlan& inout_Plan, const std::vector<Index>& in_vPending,
                 std::size_t in_uiFirst, std::size_t in_uiScaled);
    static Scaling findScaling(SealedPlan& inout_Plan, const std::vector<Index>& in_vPending,
                               std::size_t in_uiPlace);
    static Part makePart(SealedPlan& inout_Plan, Index in_uiNode, const Step* in_pFactor);
    static bool take(const Part& in_Part, std::size_t in_uiCount, double*& out_pResult);
    static bool takeFactor(const Part& in_Part, double& out_dFactor);
    static void note(SealedPlan& inout_Plan, const Part& in_Part);

    const Step* m_pLeft = nullptr;
    const Step* m_pRight = nullptr;
    Part m_ScaledLeft;
    Part m_ScaledRight;
    Part m_Sum;
    Part m_Behind;
    ScaledSum m_Operation{ScaledSum::Form()};
};

} // namespace Velmora::Math::Xpr
