#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <boost/container/small_vector.hpp>

#include <velmora/Export.h>
#include <velmora/LimitedObjPtr.h>

namespace Velmora::Math::Xpr {

class ExpressionBaseImpl;

/// The parents of a node, one entry for each link, in the order in which they came.
///
/// Doesn't own them. A shared number may have as many parents as a script has lines, and they all
/// leave when the graph is destroyed: after many removals the list keeps an index, and leaves holes
/// that are closed when somebody looks.
///
/// The entries that were there at the last `seal` always stand in front of those that came later.
class VELMORA_EXPORT ParentList {
public:
    /// What the list holds.
    using Entry = LimitedObjPtr<ExpressionBaseImpl>;

    ParentList();
    ~ParentList();
    ParentList(const ParentList&) = delete;
    ParentList& operator=(const ParentList&) = delete;

    /// From the entry that came first to the end behind the last; good until the next change.
    const Entry* begin() const {
        close();
        return m_vEntries.data();
    }
    const Entry* end() const {
        close();
        return m_vEntries.data() + m_vEntries.size();
    }
    /// The number of entries.
    std::size_t size() const { return m_vEntries.size() - m_uiHoles; }
    bool empty() const { return size() == 0; }

    /// Appends an entry.
    void add(const Entry& in_pParent);

    /// Removes the first entry of that parent. False if there is none.
    bool removeFirst(const ExpressionBaseImpl& in_Parent);

    /// Puts another parent in the place of all but the first entries of that parent.
    void replaceBehind(std::size_t in_uiKept, const ExpressionBaseImpl& in_Parent,
                       ExpressionBaseImpl& in_Other);

    /// Remembers which entries there are now.
    void seal();

    /// Behind the last entry that was there at the last `seal`; begins at `begin`.
    const Entry* sealedEnd() const {
        close();
        return m_vEntries.data() + m_uiSealed;
    }

private:
    class Index;

    void close() const {
        if (m_uiHoles != 0) {
            closeHoles();
        }
    }
    void closeHoles() const;
    bool hasIndex();
    bool removeIndexed(const ExpressionBaseImpl& in_Parent);

    /// Most nodes have one parent, or an operator's argument and the operator that reads past it.
    using Entries = boost::container::small_vector<Entry, 2>;

    mutable Entries m_vEntries;
    mutable std::uint32_t m_uiSealed = 0;
    mutable std::uint32_t m_uiHoles = 0;
    /// Entries that removals have looked at since there was an index.
    mutable std::uint64_t m_uiSearched = 0;
    mutable std::unique_ptr<Index> m_pIndex;
};

} // namespace Velmora::Math::Xpr
