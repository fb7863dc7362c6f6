#include "support/src/BlockPool.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Velmora {
namespace {

/// The two forms of the pool's service.
struct Form {
    void* (*m_allocate)(std::size_t);
    void (*m_deallocate)(void*, std::size_t);
};

const Form Forms[] = {
    {[](std::size_t in_uiSize) { return BlockPool::allocate(in_uiSize); },
     [](void* in_pBlock, std::size_t in_uiSize) { BlockPool::deallocate(in_pBlock, in_uiSize); }},
    {[](std::size_t in_uiSize) { return BlockPool::allocateUnsized(in_uiSize); },
     [](void* in_pBlock, std::size_t) { BlockPool::deallocateUnsized(in_pBlock); }}};

class BlockPoolTest : public testing::TestWithParam<Form> {
protected:
    struct Block {
        unsigned char* m_pBytes;
        std::size_t m_uiSize;
        unsigned char m_uiMark;
    };

    /// Fills a new block with a mark of its own.
    void add(std::size_t in_uiSize) {
        auto* const pBytes = static_cast<unsigned char*>(GetParam().m_allocate(in_uiSize));
        ASSERT_NE(pBytes, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pBytes) % alignof(std::max_align_t), 0u);
        const auto uiMark = static_cast<unsigned char>(m_vBlocks.size() % 251);
        std::memset(pBytes, uiMark, in_uiSize);
        m_vBlocks.push_back({pBytes, in_uiSize, uiMark});
    }

    /// Whether nobody has written into the block.
    static bool isUntouched(const Block& in_Block) {
        return std::all_of(in_Block.m_pBytes, in_Block.m_pBytes + in_Block.m_uiSize,
                           [&](unsigned char in_uiByte) { return in_uiByte == in_Block.m_uiMark; });
    }

    void removeLast(std::size_t in_uiCount) {
        for (std::size_t ui = 0; ui != in_uiCount; ++ui) {
            EXPECT_TRUE(isUntouched(m_vBlocks.back()));
            GetParam().m_deallocate(m_vBlocks.back().m_pBytes, m_vBlocks.back().m_uiSize);
            m_vBlocks.pop_back();
        }
    }

    void shuffle() { std::shuffle(m_vBlocks.begin(), m_vBlocks.end(), m_Random); }

    std::vector<Block> m_vBlocks;
    std::mt19937 m_Random{1};
};

TEST_P(BlockPoolTest, BlocksOfEverySizeAreAlignedAndApart) {
    for (std::size_t uiSize = 0; uiSize < 2100; uiSize += 3) {
        add(uiSize);
        add(uiSize);
    }
    shuffle();
    removeLast(m_vBlocks.size());
}

TEST_P(BlockPoolTest, ALargeBlockStandsAlone) {
    for (const std::size_t uiSize : {1024, 1025, 16384, 100000}) {
        add(uiSize);
        add(uiSize);
    }
    removeLast(m_vBlocks.size());
}

TEST_P(BlockPoolTest, BlocksOfALargeGraphComeAndGoInAnyOrder) {
    // Several megabytes, more than the heap gives slab by slab.
    for (int iRound = 0; iRound != 3; ++iRound) {
        while (m_vBlocks.size() < 12000) {
            add(344);
            add(544);
        }
        shuffle();
        removeLast(9000);
        while (m_vBlocks.size() < 12000) {
            add(344);
        }
        shuffle();
        removeLast(iRound == 1 ? 6000 : m_vBlocks.size());
    }
}

TEST_P(BlockPoolTest, ABlockThatWasFreedIsUsedAgain) {
    add(48);
    void* const pFirst = m_vBlocks.back().m_pBytes;
    add(48);
    std::swap(m_vBlocks.front(), m_vBlocks.back());
    removeLast(1);
#if !defined(__SANITIZE_ADDRESS__)
    add(48);
    EXPECT_EQ(m_vBlocks.back().m_pBytes, pFirst);
#else
    static_cast<void>(pFirst);
#endif
    removeLast(m_vBlocks.size());
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// A cache has few lines for addresses that differ by multiples of what a slab is aligned to.
TEST_P(BlockPoolTest, EqualPlacesOfSlabsAreOnDifferentLines) {
    constexpr std::size_t SlabSize = 16384;
    constexpr std::size_t Line = 64;
    constexpr std::size_t BlockSize = 464;
    constexpr std::size_t Slabs = 9;
    std::map<std::uintptr_t, std::uintptr_t> mapFirstOfSlab;
    while (mapFirstOfSlab.size() != Slabs) {
        add(BlockSize);
        const auto uiBlock = reinterpret_cast<std::uintptr_t>(m_vBlocks.back().m_pBytes);
        mapFirstOfSlab.emplace(uiBlock / SlabSize, uiBlock % SlabSize / Line);
    }
    std::set<std::uintptr_t> places;
    for (const auto& slab : mapFirstOfSlab) {
        places.insert(slab.second);
    }
    // The first slab may have been begun before, and the ninth begins like the first.
    EXPECT_GE(places.size(), Slabs - 1);
    removeLast(m_vBlocks.size());
}
#endif

TEST_P(BlockPoolTest, AnyThreadMayFreeABlock) {
    constexpr std::size_t Threads = 4;
    constexpr std::size_t Blocks = 2000;
    const Form form = GetParam();
    std::vector<std::vector<std::size_t*>> vPassedOn(Threads);
    const auto run = [&](const auto& in_work) {
        std::vector<std::thread> vThreads;
        for (std::size_t uiThread = 0; uiThread != Threads; ++uiThread) {
            vThreads.emplace_back(in_work, uiThread);
        }
        for (std::thread& thread : vThreads) {
            thread.join();
        }
    };
    run([&](std::size_t in_uiThread) {
        for (std::size_t ui = 0; ui != Blocks; ++ui) {
            auto* const pNumber = static_cast<std::size_t*>(form.m_allocate(sizeof(std::size_t)));
            *pNumber = in_uiThread * Blocks + ui;
            vPassedOn[in_uiThread].push_back(pNumber);
        }
    });
    std::vector<std::size_t> vSums(Threads);
    run([&](std::size_t in_uiThread) {
        for (std::size_t* const pNumber : vPassedOn[(in_uiThread + 1) % Threads]) {
            vSums[in_uiThread] += *pNumber;
            form.m_deallocate(pNumber, sizeof(std::size_t));
        }
    });
    std::size_t uiSum = 0;
    for (const std::size_t uiPart : vSums) {
        uiSum += uiPart;
    }
    EXPECT_EQ(uiSum, Threads * Blocks * (Threads * Blocks - 1) / 2);
}

INSTANTIATE_TEST_SUITE_P(Sized, BlockPoolTest, testing::Values(Forms[0]));
INSTANTIATE_TEST_SUITE_P(Unsized, BlockPoolTest, testing::Values(Forms[1]));

} // namespace
} // namespace Velmora
