#include <velmora/TSStackIDGenerator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

namespace Velmora {
namespace {

TEST(TSStackIDGeneratorTest, StartsAtOneAndNeverRepeatsEvenWhatWasGivenBack) {
    TSStackIDGenerator generator;
    EXPECT_EQ(1u, generator.generateId());
    generator.releaseId(1);
    EXPECT_EQ(2u, generator.generateId());
    TSStackIDGenerator other;
    EXPECT_EQ(1u, other.generateId());
}

TEST(TSStackIDGeneratorTest, ThreadsGetDistinctIdentifiers) {
    TSStackIDGenerator generator;
    constexpr std::size_t PerThread = 1000;
    std::vector<std::vector<unsigned long>> vTaken(4);
    std::vector<std::thread> vThreads;
    for (std::vector<unsigned long>& vOwn : vTaken) {
        vThreads.emplace_back([&generator, &vOwn] {
            for (std::size_t ui = 0; ui < PerThread; ++ui) {
                vOwn.push_back(generator.generateId());
            }
        });
    }
    std::vector<unsigned long> vAll;
    for (std::size_t ui = 0; ui < vThreads.size(); ++ui) {
        vThreads[ui].join();
        vAll.insert(vAll.end(), vTaken[ui].begin(), vTaken[ui].end());
    }
    std::sort(vAll.begin(), vAll.end());
    ASSERT_EQ(4 * PerThread, vAll.size());
    EXPECT_EQ(vAll.end(), std::adjacent_find(vAll.begin(), vAll.end()));
    EXPECT_EQ(1u, vAll.front());
    EXPECT_EQ(4 * PerThread, vAll.back());
}

} // namespace
} // namespace Velmora
