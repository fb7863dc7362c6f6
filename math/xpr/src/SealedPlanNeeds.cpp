#include "SealedPlanNeeds.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "FlagBlock.h"
#include "SealedPlanBuilder.h"

namespace Velmora::Math::Xpr {

std::vector<SealedPlan::Index> SealedPlan::listNeeds(Index in_uiNode) const {
    std::vector<bool> vSeen(m_vSteps.size());
    std::vector<Index> vNeeds;
    std::vector<std::pair<Index, Index>> vPath;
    const auto enter = [&](Index in_uiNeeded) {
        if (!vSeen[in_uiNeeded]) {
            vSeen[in_uiNeeded] = true;
            vPath.emplace_back(in_uiNeeded, m_vInputsBegin[in_uiNeeded]);
        }
    };
    enter(in_uiNode);
    while (!vPath.empty()) {
        auto& place = vPath.back();
        if (place.second != m_vInputsBegin[place.first + 1]) {
            enter(m_vInputs[place.second++]);
        } else {
            vNeeds.push_back(place.first);
            vPath.pop_back();
        }
    }
    return vNeeds;
}

bool SealedPlan::isSilent(Index in_uiNode) const {
    const Kind eKind = m_vSteps[in_uiNode].m_eKind;
    return eKind == Kind::Constant || eKind == Kind::Input || eKind == Kind::Forward;
}

/// Null if there is no room for them.
SealedPlan::Needs* SealedPlan::listNewNeeds(Index in_uiNode) {
    std::unique_ptr<Needs>& pNeeds = m_vNeeds[in_uiNode];
    // Listing costs as much time as memory: it ends when the room does.
    if (m_uiNeedsRoom != 0) {
        // Memory may run out at any of these: what is found here is whole.
        m_vBefore.resize(m_vValid.size());
        pNeeds = makeNeeds(in_uiNode);
        m_uiNeedsRoom -= std::min(m_uiNeedsRoom, pNeeds->m_vOrder.size());
    }
    return pNeeds.get();
}

std::unique_ptr<SealedPlan::Needs> SealedPlan::makeNeeds(Index in_uiNode) {
    auto pNeeds = std::make_unique<Needs>();
    pNeeds->m_vOrder = listNeeds(in_uiNode);
    pNeeds->m_Set = Builder::makeSet(pNeeds->m_vOrder);
    // The recursion from here may come to the nodes in another order than the list has. It shows in
    // those that log or fail.
    std::vector<Index> vShown;
    std::copy_if(pNeeds->m_vOrder.begin(), pNeeds->m_vOrder.end(), std::back_inserter(vShown),
                 [this](Index in_uiNeeded) { return !isSilent(in_uiNeeded); });
    pNeeds->m_bInOrder = std::is_sorted(vShown.begin(), vShown.end());
    makeRoomForPrograms(*pNeeds);
    return pNeeds;
}

/// A program is worth its making once two evaluations in a row were alike.
void SealedPlan::makeProgram(Needs& inout_Needs) {
    Flags pattern = m_uiScalarChanges;
    for (const Word& word : inout_Needs.m_Set.m_vWords) {
        constexpr Flags Spread = 0x9e3779b97f4a7c15;
        pattern = (pattern ^ (m_vBefore[word.m_uiPlace] & word.m_Flags)) * Spread;
    }
    if (pattern != inout_Needs.m_Pattern) {
        inout_Needs.m_Pattern = pattern;
        return;
    }
    Program& program = inout_Needs.m_Programs[inout_Needs.m_uiNext];
    program.m_Pattern.take(*this, inout_Needs);
    if (inout_Needs.m_bMayBeScalars) {
        program.m_Scalars.make(*this, inout_Needs);
    }
    if (!program.m_Scalars.isUsable()) {
        program.m_Vectors.make(*this, inout_Needs);
    }
    inout_Needs.m_uiNext = (inout_Needs.m_uiNext + 1) % inout_Needs.m_Programs.size();
}

void SealedPlan::makeRoomForPrograms(Needs& inout_Needs) {
    const std::vector<Word>& vWords = inout_Needs.m_Set.m_vWords;
    const std::size_t uiFirst = vWords.front().m_uiPlace;
    const std::size_t uiPlaces = vWords.back().m_uiPlace - uiFirst + 1;
    constexpr std::size_t MaxGap = 4;
    if (uiPlaces > MaxGap * vWords.size() || inout_Needs.m_vOrder.size() > m_uiProgramRoom) {
        return;
    }
    inout_Needs.m_bMayBeScalars = std::none_of(
        inout_Needs.m_vOrder.begin(), inout_Needs.m_vOrder.end(),
        [this](Index in_uiNode) { return m_vSteps[in_uiNode].m_eKind >= Kind::Concatenate; });
    m_vSources.resize(m_vSteps.size());
    inout_Needs.m_uiFirstPlace = uiFirst;
    inout_Needs.m_vFlags.resize(FlagBlock::roundUp(uiPlaces));
    for (const Word& word : vWords) {
        inout_Needs.m_vFlags[word.m_uiPlace - uiFirst] = word.m_Flags;
    }
    constexpr std::size_t Patterns = 2;
    inout_Needs.m_Programs.resize(Patterns);
    for (Program& program : inout_Needs.m_Programs) {
        program.m_Pattern.reserve(inout_Needs);
        program.m_Vectors.reserve(*this, inout_Needs);
        if (inout_Needs.m_bMayBeScalars) {
            program.m_Scalars.reserve(*this, inout_Needs);
        }
    }
    m_uiProgramRoom -= inout_Needs.m_vOrder.size();
}

} // namespace Velmora::Math::Xpr
