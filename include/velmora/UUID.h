#pragma once

#include <velmora/Export.h>

#include <array>
#include <cstdint>
#include <string>

namespace Velmora {

/// A unique identifier, for names that can't collide: random, of version 4.
class VELMORA_EXPORT UUID {
public:
    /// A new one. Thread-safe.
    UUID();

    /// The usual text of 36 characters, lower-case hexadecimal digits with hyphens.
    operator std::string() const;

    /// Equal if all 128 bits are.
    friend bool operator==(const UUID& in_a, const UUID& in_b) noexcept {
        return in_a.m_bytes == in_b.m_bytes;
    }
    friend bool operator!=(const UUID& in_a, const UUID& in_b) noexcept {
        return in_a.m_bytes != in_b.m_bytes;
    }

private:
    std::array<std::uint8_t, 16> m_bytes;
};

} // namespace Velmora
