#include "math/xpr/src/FlagBlock.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Velmora::Math::Xpr {
namespace {

using Words = FlagBlock::Words;

/// Lists of whole blocks inside of a longer one, from each place that a block may begin at.
class FlagBlockTest : public testing::TestWithParam<std::size_t> {
protected:
    static constexpr std::size_t Count = 2 * FlagBlock::WordsPerLook + FlagBlock::WordCount;

    Words makeWords(std::size_t in_uiCount) {
        Words vWords(in_uiCount);
        for (std::uint64_t& uiWord : vWords) {
            uiWord = m_Generator();
        }
        return vWords;
    }

    std::mt19937_64 m_Generator{17};
    Words m_vFlags = makeWords(Count + 2 * FlagBlock::WordCount);
    Words m_vOther = makeWords(Count);
    std::size_t m_uiFirst = GetParam();
};

TEST_P(FlagBlockTest, WhatIsNotInTheMaskIsCleared) {
    Words vExpected(m_vFlags);
    for (std::size_t ui = 0; ui != Count; ++ui) {
        vExpected[m_uiFirst + ui] &= m_vOther[ui];
    }
    FlagBlock::keep(m_vFlags.data() + m_uiFirst, m_vOther);
    EXPECT_EQ(vExpected, m_vFlags);
}

TEST_P(FlagBlockTest, WhatIsInTheOtherListIsSet) {
    Words vExpected(m_vFlags);
    for (std::size_t ui = 0; ui != Count; ++ui) {
        vExpected[m_uiFirst + ui] |= m_vOther[ui];
    }
    FlagBlock::add(m_vFlags.data() + m_uiFirst, m_vOther);
    EXPECT_EQ(vExpected, m_vFlags);
}

TEST_P(FlagBlockTest, ADifferenceInAnyWordOfTheMaskIsSeenAndNoOther) {
    Words vExpected(Count);
    for (std::size_t ui = 0; ui != Count; ++ui) {
        m_vOther[ui] |= 1;
        m_vOther[ui] &= ~std::uint64_t(2);
        vExpected[ui] = m_vFlags[m_uiFirst + ui] & m_vOther[ui];
    }
    const std::uint64_t* const pFlags = m_vFlags.data() + m_uiFirst;
    EXPECT_TRUE(FlagBlock::areAs(vExpected, pFlags, m_vOther));
    for (std::size_t ui = 0; ui != Count; ++ui) {
        m_vFlags[m_uiFirst + ui] ^= 2;
        EXPECT_TRUE(FlagBlock::areAs(vExpected, pFlags, m_vOther)) << ui;
        m_vFlags[m_uiFirst + ui] ^= 1;
        EXPECT_FALSE(FlagBlock::areAs(vExpected, pFlags, m_vOther)) << ui;
        m_vFlags[m_uiFirst + ui] ^= 1;
    }
}

INSTANTIATE_TEST_SUITE_P(EachPlace, FlagBlockTest,
                         testing::Range(std::size_t(0), FlagBlock::WordCount));

TEST(FlagBlockSizeTest, WordsAreRoundedUpToWholeBlocks) {
    EXPECT_EQ(0U, FlagBlock::roundUp(0));
    EXPECT_EQ(4U, FlagBlock::roundUp(1));
    EXPECT_EQ(4U, FlagBlock::roundUp(4));
    EXPECT_EQ(8U, FlagBlock::roundUp(5));
}

TEST(FlagBlockLookTest, TheComparisonEndsSoonBehindADifference) {
    // The flags end where a page does that can't be read.
    const auto uiPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const pPages =
        mmap(nullptr, 2 * uiPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pPages, MAP_FAILED);
    auto* const pEnd = static_cast<std::uint64_t*>(pPages) + uiPage / sizeof(std::uint64_t);
    ASSERT_EQ(mprotect(pEnd, uiPage, PROT_NONE), 0);
    const Words vMask(4 * FlagBlock::WordsPerLook, 1);
    const Words vExpected(vMask.size(), 1);
    EXPECT_FALSE(FlagBlock::areAs(vExpected, pEnd - FlagBlock::WordsPerLook, vMask));
    EXPECT_EQ(munmap(pPages, 2 * uiPage), 0);
}

} // namespace
} // namespace Velmora::Math::Xpr
