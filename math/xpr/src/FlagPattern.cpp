#include "FlagPattern.h"

#include <algorithm>
#include <iterator>

#include "FlagBlock.h"
#include "SealedPlanNeeds.h"

namespace Velmora::Math::Xpr {

void SealedPlan::FlagPattern::reserve(const Needs& in_Needs) {
    m_vBefore.reserve(in_Needs.m_vFlags.size());
}

void SealedPlan::FlagPattern::take(const SealedPlan& in_Plan, const Needs& in_Needs) {
    m_vBefore.clear();
    std::transform(in_Needs.m_vFlags.begin(), in_Needs.m_vFlags.end(),
                   in_Plan.m_vBefore.data() + in_Needs.m_uiFirstPlace,
                   std::back_inserter(m_vBefore),
                   [](Flags in_Flags, Flags in_Before) { return in_Flags & in_Before; });
    m_uiScalarChanges = in_Plan.m_uiScalarChanges;
}

void SealedPlan::FlagPattern::remember(SealedPlan& inout_Plan, const Needs& in_Needs) const {
    // Of other nodes an evaluation around this one may have remembered the flags.
    Flags* const pBefore = inout_Plan.m_vBefore.data() + in_Needs.m_uiFirstPlace;
    for (std::size_t ui = 0; ui != m_vBefore.size(); ++ui) {
        pBefore[ui] = (pBefore[ui] & ~in_Needs.m_vFlags[ui]) | m_vBefore[ui];
    }
}

} // namespace Velmora::Math::Xpr
