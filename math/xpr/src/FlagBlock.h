#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Velmora::Math::Xpr {

/// The flags of 32 nodes that stand side by side, a byte each: what a processor takes at a time
/// where those of a whole range are looked at or changed.
///
/// Ranges are lists of words of eight flags, of whole blocks. A list may end behind the last node.
class FlagBlock {
public:
    using Words = std::vector<std::uint64_t>;

    static constexpr std::size_t WordCount = 4;

    /// Words that are compared between one look for a difference and the next.
    static constexpr std::size_t WordsPerLook = 8 * WordCount;

    /// Words for as many, in whole blocks.
    static constexpr std::size_t roundUp(std::size_t in_uiWords) {
        return (in_uiWords + WordCount - 1) / WordCount * WordCount;
    }

    /// Clears what isn't in the mask.
    static void keep(std::uint64_t* inout_pFlags, const Words& in_vMask) {
        const std::uint64_t* const pEnd = in_vMask.data() + in_vMask.size();
        for (const auto* pMask = in_vMask.data(); pMask != pEnd; pMask += WordCount) {
            put(inout_pFlags, at(inout_pFlags) & at(pMask));
            put(inout_pFlags + HalfCount, at(inout_pFlags + HalfCount) & at(pMask + HalfCount));
            inout_pFlags += WordCount;
        }
    }

    /// Sets what is in the other list.
    static void add(std::uint64_t* inout_pFlags, const Words& in_vFlags) {
        const std::uint64_t* const pEnd = in_vFlags.data() + in_vFlags.size();
        for (const auto* pFlags = in_vFlags.data(); pFlags != pEnd; pFlags += WordCount) {
            put(inout_pFlags, at(inout_pFlags) | at(pFlags));
            put(inout_pFlags + HalfCount, at(inout_pFlags + HalfCount) | at(pFlags + HalfCount));
            inout_pFlags += WordCount;
        }
    }

    /// Are those in the mask as expected? What is expected has nothing outside of it.
    ///
    /// Who asks may have little else to do, however long the range: the comparison ends soon behind
    /// a difference.
    static bool areAs(const Words& in_vExpected, const std::uint64_t* in_pFlags,
                      const Words& in_vMask) {
        const std::uint64_t* const pEnd = in_vMask.data() + in_vMask.size();
        const std::uint64_t* pMask = in_vMask.data();
        const std::uint64_t* pExpected = in_vExpected.data();
        while (pMask != pEnd) {
            const std::uint64_t* const pStop =
                pMask + std::min<std::ptrdiff_t>(pEnd - pMask, WordsPerLook);
            Half different = {};
            for (; pMask != pStop; pMask += WordCount) {
                different |= (at(in_pFlags) & at(pMask)) ^ at(pExpected);
                different |=
                    (at(in_pFlags + HalfCount) & at(pMask + HalfCount)) ^ at(pExpected + HalfCount);
                in_pFlags += WordCount;
                pExpected += WordCount;
            }
            if ((different[0] | different[1]) != 0) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr std::size_t HalfCount = WordCount / 2;

    /// The registers that every processor has. Words are copied to them and back, since a range may
    /// begin at any word.
    using Half = std::uint64_t __attribute__((vector_size(HalfCount * sizeof(std::uint64_t))));

    static Half at(const std::uint64_t* in_pWords) {
        Half half;
        std::memcpy(&half, in_pWords, sizeof(half));
        return half;
    }
    static void put(std::uint64_t* out_pWords, Half in_Half) {
        std::memcpy(out_pWords, &in_Half, sizeof(in_Half));
    }
};

} // namespace Velmora::Math::Xpr
