#pragma once

#include <array>
#include <cstddef>

#include <velmora/math/Reductions.h>

#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

/// Reductions of one vector that are computed in one pass over it.
class SealedPlan::ReductionGroup {
public:
    explicit ReductionGroup(const Step& in_Input) : m_pInput(&in_Input) {}

    /// Where the vector comes from.
    const Step* getInput() const { return m_pInput; }

    /// Adds a node. False, and nothing has happened, if one of its kind is there.
    bool add(SealedPlan& inout_Plan, Index in_uiNode);

    /// Has a node of the host's evaluated one of them on the way?
    bool isBegun(const SealedPlan& in_Plan) const;

    /// Computes them. False, and nothing has happened, for what the nodes have to compute.
    bool compute(SealedPlan& inout_Plan) const;

    /// Computes those that aren't valid, in their order. Returns the node that failed, `Disturbed`,
    /// or `PassedOver`.
    Index computeOneByOne(SealedPlan& inout_Plan) const;

private:
    struct Part {
        Index m_uiNode = PassedOver;
        Step* m_pStep = nullptr;
        /// The variable through which it reads the vector.
        const Step* m_pArgument = nullptr;
    };

    const Part* begin() const { return m_Parts.data(); }
    const Part* end() const { return m_Parts.data() + m_uiParts; }

    const Step* m_pInput;
    std::array<Part, Reductions::KindCount> m_Parts;
    std::size_t m_uiParts = 0;
    Reductions m_Reductions;
};

} // namespace Velmora::Math::Xpr
