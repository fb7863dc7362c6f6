#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Velmora::Math::Xpr {

/// Objects that are asked for by their address, most of them in vain: a look takes a few
/// instructions wherever the address lies.
class AddressSet {
public:
    /// Makes room for as many, so that nothing allocates later, and empties the set.
    void reserve(std::size_t in_uiCount) {
        m_vPlaces.assign(sizeFor(in_uiCount), nullptr);
        m_uiMask = m_vPlaces.size() - 1;
    }

    void clear() { std::fill(m_vPlaces.begin(), m_vPlaces.end(), nullptr); }

    /// Not more than there is room for, and no null.
    void insert(const void* in_pObject) { m_vPlaces[findPlace(in_pObject)] = in_pObject; }

    bool contains(const void* in_pObject) const {
        return m_vPlaces[findPlace(in_pObject)] != nullptr;
    }

private:
    /// Three of four places stay free, so that every search ends at one, and soon.
    static std::size_t sizeFor(std::size_t in_uiCount) {
        std::size_t uiSize = 2;
        while (uiSize < 4 * in_uiCount) {
            uiSize *= 2;
        }
        return uiSize;
    }

    /// That of the object, or the free one where it would be.
    std::size_t findPlace(const void* in_pObject) const {
        // The lowest bits of addresses are alike, and so are the highest.
        constexpr std::uint64_t Spread = 0x9e3779b97f4a7c15;
        const std::uint64_t uiDigest = reinterpret_cast<std::uintptr_t>(in_pObject) * Spread;
        std::size_t uiPlace = (uiDigest >> 32) & m_uiMask;
        while (m_vPlaces[uiPlace] != nullptr && m_vPlaces[uiPlace] != in_pObject) {
            uiPlace = (uiPlace + 1) & m_uiMask;
        }
        return uiPlace;
    }

    std::vector<const void*> m_vPlaces = std::vector<const void*>(sizeFor(0), nullptr);
    std::size_t m_uiMask = m_vPlaces.size() - 1;
};

} // namespace Velmora::Math::Xpr
