#pragma once

#include <bitset>
#include <cstddef>
#include <unordered_map>

namespace Velmora::Math::Xpr {

/// A set of numbers of nodes. They are given one after the other as nodes are made, so that those
/// of a graph stand close together: a bit for each, in pages.
class IdSet {
public:
    IdSet() = default;
    IdSet(const IdSet&) = delete;
    IdSet& operator=(const IdSet&) = delete;

    void insert(unsigned long in_uiId) {
        const unsigned long uiPage = in_uiId / BitsPerPage;
        if (m_pLast == nullptr || uiPage != m_uiLast) {
            m_pLast = &m_mapPages[uiPage];
            m_uiLast = uiPage;
        }
        m_pLast->set(in_uiId % BitsPerPage);
    }

    bool contains(unsigned long in_uiId) const {
        const unsigned long uiPage = in_uiId / BitsPerPage;
        if (m_pLast != nullptr && uiPage == m_uiLast) {
            return m_pLast->test(in_uiId % BitsPerPage);
        }
        const auto itePage = m_mapPages.find(uiPage);
        return itePage != m_mapPages.end() && itePage->second.test(in_uiId % BitsPerPage);
    }

private:
    static constexpr std::size_t BitsPerPage = 4096;

    using Page = std::bitset<BitsPerPage>;

    std::unordered_map<unsigned long, Page> m_mapPages;
    /// The page of the last number that came in: the next one mostly stands there as well.
    Page* m_pLast = nullptr;
    unsigned long m_uiLast = 0;
};

} // namespace Velmora::Math::Xpr
