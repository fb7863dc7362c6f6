#pragma once

#include <velmora/Export.h>

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace Velmora {

/// The entries of a `HashMapVector`: a list that grows, and whose elements stay where they are.
///
/// They stand side by side in blocks. Most maps are the two arguments of an operator and need one
/// block; further blocks double, up to a size that a heap has at hand.
template <class Entry>
class VELMORA_EXPORT HashMapVectorEntries {
public:
    HashMapVectorEntries() = default;
    HashMapVectorEntries(const HashMapVectorEntries&) = delete;
    HashMapVectorEntries& operator=(const HashMapVectorEntries&) = delete;
    ~HashMapVectorEntries() {
        for (std::size_t ui = 0; ui != m_uiSize; ++ui) {
            (*this)[ui].~Entry();
        }
        for (std::size_t ui = 0; m_pMore != nullptr && ui != m_pMore->size(); ++ui) {
            std::allocator<Entry>().deallocate((*m_pMore)[ui], sizeOf(ui));
        }
        if (m_pFirst != nullptr) {
            std::allocator<Entry>().deallocate(m_pFirst, FirstSize);
        }
    }

    /// Exchanges the entries. They stay where they are.
    void swap(HashMapVectorEntries& inout_other) noexcept {
        std::swap(m_pFirst, inout_other.m_pFirst);
        m_pMore.swap(inout_other.m_pMore);
        std::swap(m_uiSize, inout_other.m_uiSize);
    }

    /// The entry at that position, which there must be.
    Entry& operator[](std::size_t in_ui) const {
        if (in_ui < FirstSize) {
            return m_pFirst[in_ui];
        }
        const Position position = find(in_ui);
        return (*m_pMore)[position.m_uiBlock][position.m_uiOffset];
    }

    /// Appends an entry. Nothing has changed if it throws.
    template <class... Arguments>
    void emplaceBack(Arguments&&... in_arguments) {
        reserve();
        ::new (static_cast<void*>(&(*this)[m_uiSize]))
            Entry(std::forward<Arguments>(in_arguments)...);
        ++m_uiSize;
    }

    /// The number of entries.
    std::size_t size() const noexcept { return m_uiSize; }

private:
    struct Position {
        std::size_t m_uiBlock;
        std::size_t m_uiOffset;
    };

    static constexpr std::size_t FirstSize = 2;
    static constexpr std::size_t SecondSize = 2 * FirstSize;
    /// How often the size of the blocks doubles before it stays.
    static constexpr std::size_t Doublings = 6;
    static constexpr std::size_t LastSize = SecondSize << Doublings;

    static std::size_t sizeOf(std::size_t in_uiBlock) {
        return in_uiBlock < Doublings ? SecondSize << in_uiBlock : LastSize;
    }

    /// Where a position behind the first block is.
    static Position find(std::size_t in_ui) {
        // With as many in front as there are before the second block, block n begins at its size.
        const std::size_t uiShifted = in_ui + SecondSize - FirstSize;
        if (uiShifted >= LastSize) {
            return {Doublings - 1 + uiShifted / LastSize, uiShifted % LastSize};
        }
        std::size_t uiBlock = 0;
        while (uiShifted >= SecondSize << (uiBlock + 1)) {
            ++uiBlock;
        }
        return {uiBlock, uiShifted - (SecondSize << uiBlock)};
    }

    /// Makes room for one more entry.
    void reserve() {
        if (m_uiSize < FirstSize) {
            if (m_pFirst == nullptr) {
                m_pFirst = std::allocator<Entry>().allocate(FirstSize);
            }
            return;
        }
        if (m_pMore == nullptr) {
            m_pMore = std::make_unique<std::vector<Entry*>>();
        }
        const std::size_t uiBlock = find(m_uiSize).m_uiBlock;
        if (uiBlock == m_pMore->size()) {
            m_pMore->push_back(nullptr);
            try {
                m_pMore->back() = std::allocator<Entry>().allocate(sizeOf(uiBlock));
            } catch (...) {
                m_pMore->pop_back();
                throw;
            }
        }
    }

    Entry* m_pFirst = nullptr;
    std::unique_ptr<std::vector<Entry*>> m_pMore;
    std::size_t m_uiSize = 0;
};

} // namespace Velmora
