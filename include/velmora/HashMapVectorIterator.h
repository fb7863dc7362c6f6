#pragma once

#include <velmora/Export.h>
#include <velmora/HashMapVectorEntries.h>

#include <cstddef>
#include <iterator>
#include <utility>

namespace Velmora {

/// Walks a `HashMapVector` in the order of insertion; dereferencing yields the entry.
///
/// It stays valid while entries are added, until the map is cleared, assigned or destroyed.
template <class Key, class Value, class Hash>
class VELMORA_EXPORT HashMapVectorIterator {
public:
    /// What algorithms of the standard library ask of an iterator.
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = std::pair<const Key, Value>;
    using difference_type = std::ptrdiff_t;
    using pointer = value_type*;
    using reference = value_type&;
    using Entries = HashMapVectorEntries<value_type>;

    HashMapVectorIterator() = default;

    /// At that position of the entries, which may be the end.
    HashMapVectorIterator(const Entries& in_vEntries, std::size_t in_uiPosition) noexcept
        : m_pEntries(&in_vEntries), m_uiPosition(in_uiPosition) {}

    /// The entry. There is none at the end.
    reference operator*() const { return (*m_pEntries)[m_uiPosition]; }
    pointer operator->() const { return &(*m_pEntries)[m_uiPosition]; }

    /// One entry on or back.
    HashMapVectorIterator& operator++() noexcept {
        ++m_uiPosition;
        return *this;
    }
    HashMapVectorIterator operator++(int) noexcept {
        HashMapVectorIterator before(*this);
        ++m_uiPosition;
        return before;
    }
    HashMapVectorIterator& operator--() noexcept {
        --m_uiPosition;
        return *this;
    }
    HashMapVectorIterator operator--(int) noexcept {
        HashMapVectorIterator before(*this);
        --m_uiPosition;
        return before;
    }

    /// Equal at the same position of the same map.
    friend bool operator==(const HashMapVectorIterator& in_a,
                           const HashMapVectorIterator& in_b) noexcept {
        return in_a.m_uiPosition == in_b.m_uiPosition && in_a.m_pEntries == in_b.m_pEntries;
    }
    friend bool operator!=(const HashMapVectorIterator& in_a,
                           const HashMapVectorIterator& in_b) noexcept {
        return !(in_a == in_b);
    }

private:
    template <class, class, class>
    friend class HashMapVectorConstIterator;

    const Entries* m_pEntries = nullptr;
    std::size_t m_uiPosition = 0;
};

/// The same over entries that can't be changed.
template <class Key, class Value, class Hash>
class VELMORA_EXPORT HashMapVectorConstIterator {
    using Mutable = HashMapVectorIterator<Key, Value, Hash>;

public:
    /// What algorithms of the standard library ask of an iterator.
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = std::pair<const Key, Value>;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = const value_type&;

    HashMapVectorConstIterator() = default;

    /// At that position of the entries, which may be the end.
    HashMapVectorConstIterator(const typename Mutable::Entries& in_vEntries,
                               std::size_t in_uiPosition) noexcept
        : m_iterator(in_vEntries, in_uiPosition) {}

    /// At the same position.
    HashMapVectorConstIterator(const Mutable& in_iterator) noexcept : m_iterator(in_iterator) {}

    /// The entry. There is none at the end.
    reference operator*() const { return *m_iterator; }
    pointer operator->() const { return m_iterator.operator->(); }

    /// One entry on or back.
    HashMapVectorConstIterator& operator++() noexcept {
        ++m_iterator;
        return *this;
    }
    HashMapVectorConstIterator operator++(int) noexcept { return m_iterator++; }
    HashMapVectorConstIterator& operator--() noexcept {
        --m_iterator;
        return *this;
    }
    HashMapVectorConstIterator operator--(int) noexcept { return m_iterator--; }

    /// Equal at the same position of the same map.
    friend bool operator==(const HashMapVectorConstIterator& in_a,
                           const HashMapVectorConstIterator& in_b) noexcept {
        return in_a.m_iterator == in_b.m_iterator;
    }
    friend bool operator!=(const HashMapVectorConstIterator& in_a,
                           const HashMapVectorConstIterator& in_b) noexcept {
        return !(in_a == in_b);
    }

private:
    Mutable m_iterator;
};

} // namespace Velmora
