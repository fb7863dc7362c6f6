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

/// The restricted Damerau-Levenshtein distance, in units of 1/EDIT; anything from in_uiLimit on if
/// it isn't below that.
std::size_t measureDistance(const std::string& in_strFrom, const std::string& in_strTo,
                            std::size_t in_uiLimit) {
    const auto [uiShorter, uiLonger] = std::minmax({in_strFrom.size(), in_strTo.size()});
    if ((uiLonger - uiShorter) * EDIT >= in_uiLimit) {
        return in_uiLimit;
    }
    const std::size_t uiColumns = in_strTo.size() + 1;
    std::vector<std::size_t> vBefore(uiColumns);
    std::vector<std::size_t> vLast(uiColumns);
    std::vector<std::size_t> vCosts(uiColumns);
    std::size_t uiLeastOfLast = 0;
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
        // The next row begins at this one or, where letters are swapped, at the one before.
        const std::size_t uiLeast = *std::min_element(vCosts.begin(), vCosts.end());
        if (uiLeast >= in_uiLimit && uiLeastOfLast + EDIT >= in_uiLimit) {
            return in_uiLimit;
        }
        uiLeastOfLast = uiLeast;
    }
    return vCosts.back();
}

} // namespace

std::optional<std::string> suggest(const std::string& in_strName,
                                   const std::vector<std::string>& in_vCandidates) {
    // Nobody types a longer name; the time for one would grow with the square of its length.
    constexpr std::size_t MOST_LETTERS = 128;
    if (in_strName.size() > MOST_LETTERS) {
        return std::nullopt;
    }
    const std::size_t uiEdits = std::max<std::size_t>(1, in_strName.size() / 3);
    // What shares no letter with a short name isn't near it.
    std::size_t uiNearest = std::min(uiEdits * EDIT + EDIT - 1, in_strName.size() * EDIT);
    std::optional<std::string> nearest;
    for (const std::string& strCandidate : in_vCandidates) {
        if (strCandidate == in_strName) {
            continue;
        }
        const std::size_t uiDistance = measureDistance(in_strName, strCandidate, uiNearest);
        if (uiDistance < uiNearest) {
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
