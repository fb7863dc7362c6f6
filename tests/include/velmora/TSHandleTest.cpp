#include <velmora/MemAccounts.h>
#include <velmora/TSHandle.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace Velmora {
namespace {

struct Shared : virtual Object {
    explicit Shared(std::atomic<int>& inout_iDestroyed) : m_iDestroyed(inout_iDestroyed) {}
    ~Shared() override { ++m_iDestroyed; }

    std::atomic<int>& m_iDestroyed;
};

TEST(TSHandleTest, ThreadsCopyCastAndDropHandlesOfOneObject) {
    std::atomic<int> iDestroyed{0};
    {
        TSHandle<Shared> p(new Shared(iDestroyed));
        std::vector<std::thread> vThreads;
        for (int i = 0; i < 4; ++i) {
            vThreads.emplace_back([own = p] {
                for (int j = 0; j < 500; ++j) {
                    TSHandle<Shared> copy(own);
                    const TSHandle<Object> cast(copy);
                    copy = nullptr;
                    copy = own;
                }
            });
        }
        for (std::thread& thread : vThreads) {
            thread.join();
        }
        vThreads.clear();
        EXPECT_EQ(1, p.getReferenceCount());
        EXPECT_EQ(0, iDestroyed);
    }
    EXPECT_EQ(1, iDestroyed);
}

TEST(TSHandleTest, TheLastOfManyThreadsDestroysOnce) {
    for (int i = 0; i < 50; ++i) {
        std::atomic<int> iDestroyed{0};
        std::vector<TSHandle<Shared>> vHandles(3, TSHandle<Shared>(new Shared(iDestroyed)));
        std::vector<std::thread> vThreads;
        for (TSHandle<Shared>& handle : vHandles) {
            vThreads.emplace_back([&handle] { handle = TSHandle<Shared>(); });
        }
        for (std::thread& thread : vThreads) {
            thread.join();
        }
        EXPECT_EQ(1, iDestroyed);
    }
}

TEST(TSHandleTest, CountersStandUnderTheirAccountAndAreFreed) {
    const MemAccount before = MemAccounts::get("TSReferenceCount");
    {
        std::atomic<int> iDestroyed{0};
        const TSHandle<Shared> p(new Shared(iDestroyed));
        const MemAccount held = MemAccounts::get("TSReferenceCount");
        EXPECT_EQ(before.liveBlocks + 1, held.liveBlocks);
        EXPECT_LT(before.liveBytes, held.liveBytes);
    }
    const MemAccount after = MemAccounts::get("TSReferenceCount");
    EXPECT_EQ(before.liveBlocks, after.liveBlocks);
    EXPECT_EQ(before.liveBytes, after.liveBytes);
}

} // namespace
} // namespace Velmora
