#pragma once

#include <velmora/Export.h>
#include <velmora/HashMapVectorEntries.h>
#include <velmora/HashMapVectorIterator.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Velmora {

/// The hash of a text: 32 bits, h = h * 5 + b for each byte b, from 0.
struct VELMORA_EXPORT StringHash {
    /// The hash of the text.
    std::uint32_t operator()(const std::string& in_strKey) const noexcept {
        std::uint32_t uiHash = 0;
        for (const char c : in_strKey) {
            uiHash = uiHash * 5 + static_cast<unsigned char>(c);
        }
        return uiHash;
    }
};

/// A map that is walked in the order of insertion, whatever the hashes are.
///
/// No two entries have the same key. An entry is an object with `first` and `second` that stays
/// where it is until the map is cleared, assigned or destroyed. An empty map allocates nothing, and
/// a small one has no index: its entries are compared one by one, which is faster there. Not
/// thread-safe.
template <class Key, class Value, class Hash = StringHash>
class VELMORA_EXPORT HashMapVector {
public:
    /// What the map holds, and what walks over it.
    using Entry = std::pair<const Key, Value>;
    using iterator = HashMapVectorIterator<Key, Value, Hash>;
    using const_iterator = HashMapVectorConstIterator<Key, Value, Hash>;

    HashMapVector() = default;

    /// New entries with copies of the keys and the values.
    HashMapVector(const HashMapVector& in_rhs) : m_vIndex(in_rhs.m_vIndex) {
        for (const Entry& entry : in_rhs) {
            m_vEntries.emplaceBack(entry);
        }
    }

    /// Takes the entries over; the other map is empty afterwards.
    HashMapVector(HashMapVector&& inout_rhs) noexcept { swap(inout_rhs); }

    ~HashMapVector() = default;

    /// New entries with copies of the keys and the values, in place of its own.
    HashMapVector& operator=(const HashMapVector& in_rhs) {
        if (this != &in_rhs) {
            HashMapVector copy(in_rhs);
            swap(copy);
        }
        return *this;
    }

    /// Takes the entries over in place of its own; the other map is empty afterwards.
    HashMapVector& operator=(HashMapVector&& inout_rhs) noexcept {
        HashMapVector taken(std::move(inout_rhs));
        swap(taken);
        return *this;
    }

    /// Exchanges the entries. They stay where they are.
    void swap(HashMapVector& inout_other) noexcept {
        m_vEntries.swap(inout_other.m_vEntries);
        m_vIndex.swap(inout_other.m_vIndex);
    }

    /// Appends an entry and returns its position and true. If the key exists, the old entry stays,
    /// and the result is its position and false.
    std::pair<iterator, bool> insert(const Key& in_key, const Value& in_value) {
        const std::size_t uiFound = position(in_key);
        if (uiFound != size()) {
            return {iterator(m_vEntries, uiFound), false};
        }
        reserveIndex();
        m_vEntries.emplaceBack(in_key, in_value);
        if (!m_vIndex.empty()) {
            enter(uiFound, hashOf(in_key));
        }
        return {iterator(m_vEntries, uiFound), true};
    }

    /// The entry of that key, or `end()`.
    iterator find(const Key& in_key) { return iterator(m_vEntries, position(in_key)); }
    const_iterator find(const Key& in_key) const {
        return const_iterator(m_vEntries, position(in_key));
    }

    /// From the entry that was inserted first to the end behind the last.
    iterator begin() noexcept { return iterator(m_vEntries, 0); }
    iterator end() noexcept { return iterator(m_vEntries, size()); }
    const_iterator begin() const noexcept { return const_iterator(m_vEntries, 0); }
    const_iterator end() const noexcept { return const_iterator(m_vEntries, size()); }

    /// The number of entries.
    std::size_t size() const noexcept { return m_vEntries.size(); }
    bool empty() const noexcept { return size() == 0; }

    /// Removes and releases every entry. The map is empty already while they go.
    void clear() {
        HashMapVector old;
        swap(old);
    }

private:
    struct Slot {
        std::uint32_t m_uiHash = 0;
        /// Position plus one; 0 marks a free slot.
        std::uint32_t m_uiPosition = 0;
    };

    // Below this, comparing the keys one by one beats hashing.
    static constexpr std::size_t MaxUnindexed = 8;

    std::size_t position(const Key& in_key) const {
        if (m_vIndex.empty()) {
            std::size_t ui = 0;
            while (ui < size() && !(m_vEntries[ui].first == in_key)) {
                ++ui;
            }
            return ui;
        }
        const std::uint32_t uiHash = hashOf(in_key);
        for (std::size_t ui = home(uiHash);; ui = next(ui)) {
            const Slot& slot = m_vIndex[ui];
            if (slot.m_uiPosition == 0) {
                return size();
            }
            if (slot.m_uiHash == uiHash && m_vEntries[slot.m_uiPosition - 1].first == in_key) {
                return slot.m_uiPosition - 1;
            }
        }
    }

    // Makes room for one more entry. The number of slots is a power of two and at least twice the
    // number of entries.
    void reserveIndex() {
        const std::size_t uiSize = size() + 1;
        if (uiSize <= MaxUnindexed || uiSize * 2 <= m_vIndex.size()) {
            return;
        }
        // The entries, which lie scattered, are left alone: their hashes are in the old slots.
        std::vector<Slot> vOld(m_vIndex.empty() ? MaxUnindexed * 8 : m_vIndex.size() * 2);
        vOld.swap(m_vIndex);
        for (const Slot& slot : vOld) {
            if (slot.m_uiPosition != 0) {
                enter(slot.m_uiPosition - 1, slot.m_uiHash);
            }
        }
        for (std::size_t ui = 0; vOld.empty() && ui < size(); ++ui) {
            enter(ui, hashOf(m_vEntries[ui].first));
        }
    }

    void enter(std::size_t in_uiPosition, std::uint32_t in_uiHash) {
        std::size_t ui = home(in_uiHash);
        while (m_vIndex[ui].m_uiPosition != 0) {
            ui = next(ui);
        }
        m_vIndex[ui] = Slot{in_uiHash, static_cast<std::uint32_t>(in_uiPosition + 1)};
    }

    static std::uint32_t hashOf(const Key& in_key) {
        auto uiHash = static_cast<std::uint32_t>(Hash()(in_key));
        if constexpr (std::is_same_v<Key, std::string>) {
            // Of names that end in numbers, ten thousand share a thousand values of the plain hash.
            uiHash ^= static_cast<std::uint32_t>(std::hash<std::string>()(in_key));
        }
        return uiHash;
    }

    // The low bits of the hash of a text are those of its last letters; the multiplication spreads
    // all of them.
    std::size_t home(std::uint32_t in_uiHash) const {
        return ((in_uiHash * std::uint64_t{0x9E3779B97F4A7C15}) >> 32) & (m_vIndex.size() - 1);
    }

    std::size_t next(std::size_t in_ui) const { return (in_ui + 1) & (m_vIndex.size() - 1); }

    HashMapVectorEntries<Entry> m_vEntries;
    std::vector<Slot> m_vIndex;
};

} // namespace Velmora
