#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <velmora/math/DoubleVector.h>

namespace Velmora::Fuzz {

/// The bytes that a target is called with, taken from their front.
///
/// A text goes up to the next zero byte, so that a plain file is an input; the bytes behind the
/// texts steer what is done with them. What is taken behind the end is zero.
class Input {
public:
    Input(const std::uint8_t* in_pData, std::size_t in_uiSize)
        : m_pNext(in_pData), m_pEnd(in_pData + in_uiSize) {}

    bool isAtEnd() const { return m_pNext == m_pEnd; }

    /// Up to the next zero byte, which is dropped, or to the end.
    std::string takeText();

    /// All that is left.
    std::string takeRest();

    std::uint8_t takeByte();
    std::uint8_t peekByte() const { return isAtEnd() ? std::uint8_t(0) : *m_pNext; }
    bool takeBool() { return (takeByte() & 1U) != 0; }

    /// A number below in_uiCount, which is above 0 and at most 256.
    std::size_t takeBelow(std::size_t in_uiCount) { return takeByte() % in_uiCount; }

    /// Any double: one of those at which code breaks, or one of eight bytes.
    double takeNumber();

    /// A frame of hostile numbers: any size, empty now and then, the numbers of all kinds.
    Math::DoubleVector takeFrame();

private:
    std::size_t getLeft() const { return static_cast<std::size_t>(m_pEnd - m_pNext); }

    const std::uint8_t* m_pNext;
    const std::uint8_t* m_pEnd;
};

} // namespace Velmora::Fuzz
