#include <velmora/DeepCall.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using Velmora::DeepCall;

/// Some stack for each level, and a result that shows that every level was there.
std::size_t descend(std::size_t in_uiLevels) {
    return DeepCall::run([&] {
        volatile char acRoom[512];
        acRoom[0] = 1;
        return in_uiLevels == 0 ? 0
                                : descend(in_uiLevels - 1) + static_cast<std::size_t>(acRoom[0]);
    });
}

void fall(std::size_t in_uiLevels) {
    DeepCall::run([&] {
        volatile char acRoom[512];
        acRoom[0] = 1;
        if (in_uiLevels == 0) {
            throw std::runtime_error("bottom");
        }
        fall(in_uiLevels - static_cast<std::size_t>(acRoom[0]));
    });
}

void* descendOnThread(void* out_pLevels) {
    *static_cast<std::size_t*>(out_pLevels) = descend(20000);
    return nullptr;
}

TEST(DeepCallTest, ShallowCallStaysOnItsStack) {
    EXPECT_FALSE(DeepCall::isStackLow());
    const void* pHere = __builtin_frame_address(0);
    const auto iDistance = DeepCall::run([&] {
        return std::abs(static_cast<const char*>(__builtin_frame_address(0)) -
                        static_cast<const char*>(pHere));
    });
    EXPECT_LT(iDistance, 65536);
}

TEST(DeepCallTest, RecursionGoesDeeperThanTheStack) {
    EXPECT_EQ(descend(200000), 200000U);
    EXPECT_FALSE(DeepCall::isStackLow());
}

TEST(DeepCallTest, RecursionGoesDeepOnASmallThread) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    pthread_t thread;
    std::size_t uiLevels = 0;
    ASSERT_EQ(pthread_create(&thread, &attributes, descendOnThread, &uiLevels), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(uiLevels, 20000U);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(DeepCallDeathTest, RecursionGoesDeepOnAMainThreadThatCannotTellItsStack) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            // The stack of the main thread is read from a file.
            const rlimit none = {};
            setrlimit(RLIMIT_NOFILE, &none);
            _exit(descend(200000) == 200000 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

#if !defined(__SANITIZE_THREAD__)
/// How much more than it has the process may ask the system for. A further stack doesn't go in.
void leaveRoomFor(std::size_t in_uiSize) {
    std::size_t uiPages = 0;
    std::ifstream("/proc/self/statm") >> uiPages;
    const rlim_t uiLimit = uiPages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + in_uiSize;
    const rlimit limit{uiLimit, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
}

bool isRefused() {
    try {
        descend(200000);
        return false;
    } catch (const std::bad_alloc&) {
        return !DeepCall::isStackLow();
    }
}

TEST(DeepCallDeathTest, RecursionThatFindsNoFurtherStackThrowsAndCanBeTriedAgain) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            leaveRoomFor(std::size_t(32) * 1024 * 1024);
            const bool bRefused = isRefused() && descend(1000) == 1000 && isRefused();
            leaveRoomFor(std::size_t(1024) * 1024 * 1024);
            _exit(bRefused && descend(200000) == 200000 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}
#endif
#endif

TEST(DeepCallTest, ExceptionComesThroughFromADeepLevel) {
    EXPECT_THROW(fall(100000), std::runtime_error);
    EXPECT_FALSE(DeepCall::isStackLow());
    EXPECT_EQ(descend(100000), 100000U);
}

TEST(DeepCallTest, ThreadsGoDeepAtTheSameTime) {
    std::vector<std::size_t> vLevels(4);
    std::vector<std::thread> vThreads;
    vThreads.reserve(vLevels.size());
    for (std::size_t& uiLevels : vLevels) {
        vThreads.emplace_back([&uiLevels] { uiLevels = descend(50000); });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    EXPECT_EQ(vLevels, std::vector<std::size_t>(4, 50000));
}

} // namespace
