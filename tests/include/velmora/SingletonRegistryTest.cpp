#include <velmora/SingletonRegistry.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace Velmora {
namespace {

void ignore(void*) {}

TEST(SingletonRegistryTest, TheFirstInstanceOfANameStands) {
    SingletonRegistry& registry = SingletonRegistry::getInstance();
    int iFirst = 0;
    int iSecond = 0;
    int iOther = 0;
    EXPECT_EQ(&iFirst, registry.registerInstance("SingletonRegistryTest.a", &iFirst, ignore, 0));
    EXPECT_EQ(&iFirst, registry.registerInstance("SingletonRegistryTest.a", &iSecond, ignore, 0));
    EXPECT_EQ(&iOther, registry.registerInstance("SingletonRegistryTest.b", &iOther, ignore, 0));
}

TEST(SingletonRegistryTest, ANullInstanceAsksWithoutRegistering) {
    SingletonRegistry& registry = SingletonRegistry::getInstance();
    EXPECT_EQ(nullptr, registry.registerInstance("SingletonRegistryTest.ask", nullptr, ignore, 0));
    int iInstance = 0;
    EXPECT_EQ(&iInstance,
              registry.registerInstance("SingletonRegistryTest.ask", &iInstance, ignore, 0));
    EXPECT_EQ(&iInstance,
              registry.registerInstance("SingletonRegistryTest.ask", nullptr, ignore, 0));
}

TEST(SingletonRegistryTest, ThreadsThatRegisterTogetherGetOneInstance) {
    static int s_instances[4];
    std::atomic<void*> results[4];
    std::vector<std::thread> vThreads;
    for (int i = 0; i < 4; ++i) {
        vThreads.emplace_back([i, &results] {
            results[i] = SingletonRegistry::getInstance().registerInstance(
                "SingletonRegistryTest.threads", &s_instances[i], ignore, 0);
        });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    for (const std::atomic<void*>& pResult : results) {
        EXPECT_EQ(results[0].load(), pResult.load());
    }
}

void tell(void* in_pInstance) {
    std::fprintf(stderr, "%s ", static_cast<const char*>(in_pInstance));
}

// The child is a process of its own: log4cplus's threads don't survive a fork, and it waits for
// them at process end.
class SingletonRegistryDeathTest : public testing::Test {
protected:
    SingletonRegistryDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// Makes and registers a further singleton while the others go.
void tellAndRegister(void* in_pInstance) {
    tell(in_pInstance);
    static char s_szLate[] = "late";
    SingletonRegistry::getInstance().registerInstance("SingletonRegistryTest.late", s_szLate, tell,
                                                      0);
}

TEST_F(SingletonRegistryDeathTest, InstancesDieAtProcessEndInReverseOrder) {
    EXPECT_EXIT(
        {
            static char s_szFirst[] = "first";
            static char s_szSecond[] = "second";
            SingletonRegistry& registry = SingletonRegistry::getInstance();
            registry.registerInstance("SingletonRegistryTest.first", s_szFirst, tell, 0);
            registry.registerInstance("SingletonRegistryTest.second", s_szSecond, tell, 0);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "second first ");
}

TEST_F(SingletonRegistryDeathTest, AnInstanceMadeDuringTheTeardownDiesToo) {
    EXPECT_EXIT(
        {
            static char s_szEarly[] = "early";
            SingletonRegistry::getInstance().registerInstance("SingletonRegistryTest.early",
                                                              s_szEarly, tellAndRegister, 0);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "early late ");
}

} // namespace
} // namespace Velmora
