#pragma once

#include <cstddef>
#include <vector>

#include "FlagBlock.h"
#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

/// Which nodes of a set were valid ahead of an evaluation, and which scalars the plan had: what is
/// computed, and how, is the same in all evaluations that begin like that.
class SealedPlan::FlagPattern {
public:
    /// Makes room for the flags of a set, so that nothing allocates later.
    void reserve(const Needs& in_Needs);

    /// Takes the flags that the plan remembered last, and the scalars that it has now.
    void take(const SealedPlan& in_Plan, const Needs& in_Needs);

    /// Are these the plan's present flags, of those in the mask from that place on, and scalars?
    bool fits(const SealedPlan& in_Plan, const FlagBlock::Words& in_vMask,
              std::size_t in_uiFirstPlace) const {
        return m_uiScalarChanges == in_Plan.m_uiScalarChanges &&
               FlagBlock::areAs(m_vBefore, in_Plan.m_vValid.data() + in_uiFirstPlace, in_vMask);
    }

    /// Has the plan remember these flags as those that were set ahead.
    void remember(SealedPlan& inout_Plan, const Needs& in_Needs) const;

private:
    /// Word by word.
    std::vector<Flags> m_vBefore;
    std::size_t m_uiScalarChanges = 0;
};

} // namespace Velmora::Math::Xpr
