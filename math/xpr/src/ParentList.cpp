#include <velmora/math/xpr/ParentList.h>

#include <algorithm>
#include <memory_resource>
#include <new>
#include <unordered_map>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

namespace {

/// An index costs as much as this many searches through the list.
constexpr std::uint64_t SearchesPerIndex = 64;

/// How many entries move up in the time in which a search passes one.
constexpr std::uint64_t MovesPerStep = 8;

} // namespace

/// Where the first entry of each parent is, and how many it has.
class ParentList::Index {
public:
    explicit Index(const Entries& in_vEntries) {
        m_mapPlaces.reserve(in_vEntries.size());
        for (std::size_t ui = 0; ui != in_vEntries.size(); ++ui) {
            add(in_vEntries[ui].get(), ui);
        }
    }

    void add(const ExpressionBaseImpl* in_pParent, std::size_t in_uiPosition) {
        ++m_mapPlaces.emplace(in_pParent, Place{in_uiPosition, 0}).first->second.m_uiCount;
    }

    std::size_t count(const ExpressionBaseImpl& in_Parent) const {
        const auto ite = m_mapPlaces.find(&in_Parent);
        return ite == m_mapPlaces.end() ? 0 : ite->second.m_uiCount;
    }

    /// Makes a hole of the first entry of that parent, which has one.
    void remove(const ExpressionBaseImpl& in_Parent, Entries& inout_vEntries) {
        const auto ite = m_mapPlaces.find(&in_Parent);
        Place& place = ite->second;
        inout_vEntries[place.m_uiFirst] = nullptr;
        if (--place.m_uiCount == 0) {
            m_mapPlaces.erase(ite);
            return;
        }
        while (inout_vEntries[place.m_uiFirst].get() != &in_Parent) {
            ++place.m_uiFirst;
        }
    }

private:
    struct Place {
        std::size_t m_uiFirst;
        std::size_t m_uiCount;
    };

    std::pmr::monotonic_buffer_resource m_Memory;
    std::pmr::unordered_map<const ExpressionBaseImpl*, Place> m_mapPlaces{&m_Memory};
};

ParentList::ParentList() = default;

ParentList::~ParentList() = default;

void ParentList::add(const Entry& in_pParent) {
    m_vEntries.push_back(in_pParent);
    if (m_pIndex == nullptr) {
        return;
    }
    try {
        m_pIndex->add(in_pParent.get(), m_vEntries.size() - 1);
    } catch (const std::bad_alloc&) {
        closeHoles();
    }
}

bool ParentList::removeFirst(const ExpressionBaseImpl& in_Parent) {
    if (hasIndex()) {
        return removeIndexed(in_Parent);
    }
    const auto ite = std::find_if(m_vEntries.begin(), m_vEntries.end(),
                                  [&](const Entry& in_p) { return in_p.get() == &in_Parent; });
    const auto uiPosition = static_cast<std::size_t>(ite - m_vEntries.begin());
    m_uiSearched += uiPosition;
    if (ite == m_vEntries.end()) {
        return false;
    }
    m_uiSearched += (m_vEntries.size() - uiPosition) / MovesPerStep;
    m_vEntries.erase(ite);
    m_uiSealed -= uiPosition < m_uiSealed ? 1 : 0;
    return true;
}

bool ParentList::hasIndex() {
    if (m_pIndex == nullptr && m_uiSearched > SearchesPerIndex * m_vEntries.size()) {
        try {
            m_pIndex = std::make_unique<Index>(m_vEntries);
        } catch (const std::bad_alloc&) {
            // Parents leave when they die, and a destructor can do without an index.
            m_uiSearched = 0;
        }
    }
    return m_pIndex != nullptr;
}

bool ParentList::removeIndexed(const ExpressionBaseImpl& in_Parent) {
    if (m_pIndex->count(in_Parent) == 0) {
        return false;
    }
    m_pIndex->remove(in_Parent, m_vEntries);
    ++m_uiHoles;
    if (m_uiHoles > m_vEntries.size() / 2) {
        closeHoles();
    }
    return true;
}

void ParentList::closeHoles() const {
    if (m_pIndex == nullptr) {
        return;
    }
    const auto isHole = [](const Entry& in_p) { return in_p.isNull(); };
    const auto iteSealedEnd = m_vEntries.begin() + m_uiSealed;
    m_uiSealed -=
        static_cast<std::uint32_t>(std::count_if(m_vEntries.begin(), iteSealedEnd, isHole));
    m_vEntries.erase(std::remove_if(m_vEntries.begin(), m_vEntries.end(), isHole),
                     m_vEntries.end());
    m_uiHoles = 0;
    m_uiSearched = 0;
    m_pIndex.reset();
}

void ParentList::replaceBehind(std::size_t in_uiKept, const ExpressionBaseImpl& in_Parent,
                               ExpressionBaseImpl& in_Other) {
    if (hasIndex() && m_pIndex->count(in_Parent) <= in_uiKept) {
        return;
    }
    // What is changed here isn't in an index any more.
    closeHoles();
    std::size_t uiKept = 0;
    for (Entry& pEntry : m_vEntries) {
        if (pEntry.get() == &in_Parent && uiKept++ >= in_uiKept) {
            pEntry = &in_Other;
        }
    }
    m_uiSearched += m_vEntries.size();
}

void ParentList::seal() {
    close();
    m_uiSealed = static_cast<std::uint32_t>(m_vEntries.size());
}

} // namespace Velmora::Math::Xpr
