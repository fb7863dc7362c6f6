#include "Suggestion.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace Vxpr {

namespace {

// A whole edit costs as much as this many changes of case.
constexpr std::size_t EDIT = 10;

std::size_t replacementCost(char in_cFrom, char in_cTo) {
    if (in_cFrom == in_cTo) {
        return 0;
    }
    const auto lower = [](char in_c) { return std::tolower(static_cast<unsigned char>(in_c)); };
    return lower(in_cFrom) == lower(in_cTo) ? 1 : EDIT;
}

/// The restricted Damerau-Levenshtein distance, in units of 1/EDIT.
std::size_t measureDistance(const std::string& in_strFrom, const std::string& in_strTo) {
    const std::size_t uiColumns = in_strTo.size() + 1;
    std::vector<std::size_t> vBefore(uiColumns);
    std::vector<std::size_t> vLast(uiColumns);
    std::vector<std::size_t> vCosts(uiColumns);
    for (std::size_t uiTo = 0; uiTo < uiColumns; ++uiTo) {
        vCosts[uiTo] = uiTo * EDIT;
    }
    for (std::size_t uiFrom = 1; uiFrom <= in_strFrom.size(); ++uiFrom) {
        vBefore.swap(vLast);
        vLast.swap(vCosts);
        vCosts[0] = uiFrom * EDIT;
        for (std::size_t uiTo = 1; uiTo < uiColumns; ++uiTo) {
            const char cFrom = in_strFrom[uiFrom - 1];
            const char cTo = in_strTo[uiTo - 1];
            vCosts[uiTo] = std::min({vLast[uiTo] + EDIT, vCosts[uiTo - 1] + EDIT,
                                     vLast[uiTo - 1] + replacementCost(cFrom, cTo)});
            if (uiFrom > 1 && uiTo > 1 && cFrom == in_strTo[uiTo - 2] &&
                in_strFrom[uiFrom - 2] == cTo) {
                vCosts[uiTo] = std::min(vCosts[uiTo], vBefore[uiTo - 2] + EDIT);
            }
        }
    }
    return vCosts.back();
}

} // namespace

std::optional<std::string> suggest(const std::string& in_strName,
                                   const std::vector<std::string>& in_vCandidates) {
    const std::size_t uiEdits = std::max<std::size_t>(1, in_strName.size() / 3);
    std::size_t uiNearest = uiEdits * EDIT + EDIT - 1;
    std::optional<std::string> nearest;
    for (const std::string& strCandidate : in_vCandidates) {
        const std::size_t uiDistance = measureDistance(in_strName, strCandidate);
        // What shares no letter with a short name isn't near it.
        if (uiDistance < uiNearest && uiDistance < in_strName.size() * EDIT &&
            strCandidate != in_strName) {
            uiNearest = uiDistance;
            nearest = strCandidate;
        }
    }
    return nearest;
}

std::string suggestInWords(const std::string& in_strName,
                           const std::vector<std::string>& in_vCandidates) {
    const auto nearest = suggest(in_strName, in_vCandidates);
    return nearest ? "; did you mean `" + *nearest + "`?" : std::string();
}

} // namespace Vxpr
