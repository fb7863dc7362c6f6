#include <velmora/DefaultStaticMemAllocator.h>
#include <velmora/MemAccounting.h>
#include <velmora/MemAccounts.h>
#include <velmora/NoSizeMemAllocator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace Velmora {
namespace {

void expectAccount(const char* in_szName, std::size_t in_uiLiveBlocks, std::size_t in_uiLiveBytes,
                   std::size_t in_uiTotalBlocks) {
    const MemAccount account = MemAccounts::get(in_szName);
    EXPECT_EQ(in_szName, account.name);
    EXPECT_EQ(in_uiLiveBlocks, account.liveBlocks) << in_szName;
    EXPECT_EQ(in_uiLiveBytes, account.liveBytes) << in_szName;
    EXPECT_EQ(in_uiTotalBlocks, account.totalBlocks) << in_szName;
}

TEST(MemAccountsTest, TheDefaultAllocatorCountsBlocksAndBytes) {
    const char* szAccount = "MemAccountsTest.default";
    void* pFirst = DefaultStaticMemAllocator::allocate(10, szAccount);
    void* pSecond = DefaultStaticMemAllocator::allocate(20, szAccount);
    expectAccount(szAccount, 2, 30, 2);
    DefaultStaticMemAllocator::deallocate(pFirst, 10, szAccount);
    expectAccount(szAccount, 1, 20, 2);
    DefaultStaticMemAllocator::deallocate(pSecond, 20, szAccount);
    expectAccount(szAccount, 0, 0, 2);
}

TEST(MemAccountsTest, TheAllocatorWithoutSizesCountsBlocksOnly) {
    const char* szAccount = "MemAccountsTest.noSize";
    void* p = NoSizeMemAllocator::allocate(10, szAccount);
    expectAccount(szAccount, 1, 0, 1);
    NoSizeMemAllocator::deallocate(p, szAccount);
    expectAccount(szAccount, 0, 0, 1);
}

TEST(MemAccountsTest, APlaceThatKeepsTheNameCountsInTheAccountOfThatName) {
    static MemAccountName s_First("MemAccountsTest.kept");
    static MemAccountName s_Second("MemAccountsTest.kept");
    EXPECT_STREQ("MemAccountsTest.kept", s_First.getName());
    void* pFirst = DefaultStaticMemAllocator::allocate(10, s_First);
    void* pSecond = DefaultStaticMemAllocator::allocate(20, s_First);
    void* pThird = DefaultStaticMemAllocator::allocate(30, "MemAccountsTest.kept");
    expectAccount("MemAccountsTest.kept", 3, 60, 3);
    DefaultStaticMemAllocator::deallocate(pFirst, 10, s_Second);
    DefaultStaticMemAllocator::deallocate(pSecond, 20, "MemAccountsTest.kept");
    DefaultStaticMemAllocator::deallocate(pThird, 30, s_First);
    DefaultStaticMemAllocator::deallocate(nullptr, 40, s_First);
    expectAccount("MemAccountsTest.kept", 0, 0, 3);
}

TEST(MemAccountsTest, TheAllocatorWithoutSizesTakesAKeptNameToo) {
    static MemAccountName s_Name("MemAccountsTest.keptNoSize");
    void* p = NoSizeMemAllocator::allocate(10, s_Name);
    expectAccount("MemAccountsTest.keptNoSize", 1, 0, 1);
    NoSizeMemAllocator::deallocate(p, s_Name);
    NoSizeMemAllocator::deallocate(nullptr, s_Name);
    expectAccount("MemAccountsTest.keptNoSize", 0, 0, 1);
}

TEST(MemAccountsTest, ReleasingNullCountsNothing) {
    DefaultStaticMemAllocator::deallocate(nullptr, 10, "MemAccountsTest.null");
    NoSizeMemAllocator::deallocate(nullptr, "MemAccountsTest.null");
    expectAccount("MemAccountsTest.null", 0, 0, 0);
}

TEST(MemAccountsTest, BlocksWithoutANameAreCountedUnderTheEmptyOne) {
    const std::size_t uiBefore = MemAccounts::get("").liveBlocks;
    void* p = NoSizeMemAllocator::allocate(8, nullptr);
    EXPECT_EQ(uiBefore + 1, MemAccounts::get(nullptr).liveBlocks);
    EXPECT_EQ(uiBefore + 1, MemAccounts::get("").liveBlocks);
    NoSizeMemAllocator::deallocate(p, nullptr);
    EXPECT_EQ(uiBefore, MemAccounts::get("").liveBlocks);
}

TEST(MemAccountsTest, AnAllocationThatFailsGivesNullAndCountsNothing) {
    volatile std::size_t uiTooMuch = PTRDIFF_MAX;
    const char* szAccount = "MemAccountsTest.failing";
    EXPECT_EQ(nullptr, DefaultStaticMemAllocator::allocate(uiTooMuch, szAccount));
    EXPECT_EQ(nullptr, NoSizeMemAllocator::allocate(uiTooMuch, szAccount));
    expectAccount(szAccount, 0, 0, 0);
}

TEST(MemAccountsTest, EqualTextsAtTwoPlacesAreOneAccount) {
    const std::string strFirst("MemAccountsTest.text");
    const std::string strSecond("MemAccountsTest.text");
    void* p = DefaultStaticMemAllocator::allocate(8, strFirst.c_str());
    DefaultStaticMemAllocator::deallocate(p, 8, strSecond.c_str());
    expectAccount("MemAccountsTest.text", 0, 0, 1);
}

TEST(MemAccountsTest, OnePlaceWithTwoTextsIsTwoAccounts) {
    std::string strName("MemAccountsTest.a");
    void* pA = DefaultStaticMemAllocator::allocate(8, strName.c_str());
    strName.back() = 'b';
    void* pB = DefaultStaticMemAllocator::allocate(8, strName.c_str());
    expectAccount("MemAccountsTest.a", 1, 8, 1);
    expectAccount("MemAccountsTest.b", 1, 8, 1);
    DefaultStaticMemAllocator::deallocate(pB, 8, "MemAccountsTest.b");
    DefaultStaticMemAllocator::deallocate(pA, 8, "MemAccountsTest.a");
}

TEST(MemAccountsTest, TheSnapshotIsSortedByNameAndHasEachAccountOnce) {
    for (const char* szName : {"MemAccountsTest.z", "MemAccountsTest.y", "MemAccountsTest.z"}) {
        DefaultStaticMemAllocator::deallocate(DefaultStaticMemAllocator::allocate(1, szName), 1,
                                              szName);
    }
    const std::vector<MemAccount> vAccounts = MemAccounts::snapshot();
    const auto bNotBefore = [](const MemAccount& in_a, const MemAccount& in_b) {
        return in_a.name >= in_b.name;
    };
    EXPECT_EQ(vAccounts.end(), std::adjacent_find(vAccounts.begin(), vAccounts.end(), bNotBefore));
    EXPECT_TRUE(std::any_of(vAccounts.begin(), vAccounts.end(), [](const MemAccount& in_account) {
        return in_account.name == "MemAccountsTest.z" && in_account.totalBlocks == 2;
    }));
}

TEST(MemAccountsTest, ThousandsOfAccountsAreKeptApart) {
    std::vector<std::string> vNames;
    for (int i = 0; i < 2000; ++i) {
        vNames.push_back("MemAccountsTest.many." + std::to_string(i));
    }
    for (int iRound = 0; iRound < 2; ++iRound) {
        for (const std::string& strName : vNames) {
            NoSizeMemAllocator::deallocate(NoSizeMemAllocator::allocate(1, strName.c_str()),
                                           strName.c_str());
        }
    }
    for (const std::string& strName : vNames) {
        expectAccount(strName.c_str(), 0, 0, 2);
    }
}

TEST(MemAccountsTest, ThreadsThatOpenAndUseAccountsTogetherLoseNoCount) {
    constexpr int ThreadCount = 4;
    constexpr int NameCount = 16;
    std::vector<std::thread> vThreads;
    for (int i = 0; i < ThreadCount; ++i) {
        vThreads.emplace_back([] {
            for (int j = 0; j < NameCount * 100; ++j) {
                const std::string strName =
                    "MemAccountsTest.threads." + std::to_string(j % NameCount);
                void* p = DefaultStaticMemAllocator::allocate(16, strName.c_str());
                DefaultStaticMemAllocator::deallocate(p, 16, strName.c_str());
            }
        });
    }
    MemAccounts::snapshot();
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    for (int j = 0; j < NameCount; ++j) {
        const std::string strName = "MemAccountsTest.threads." + std::to_string(j);
        expectAccount(strName.c_str(), 0, 0, ThreadCount * 100);
    }
}

struct Sized {
    VELMORA_MEM_ACCOUNT("MemAccountingTest.Sized")
    virtual ~Sized() = default;
    double m_d = 0.0;
};
struct BiggerSized : Sized {
    double m_v[8] = {};
};
struct Unsized {
    VELMORA_MEM_ACCOUNT_NO_SIZE("MemAccountingTest.Unsized")
    double m_d = 0.0;
};

TEST(MemAccountingTest, AClassNamesItsAccount) {
    EXPECT_STREQ("MemAccountingTest.Sized", Sized::getMemAccountName());
    EXPECT_STREQ("MemAccountingTest.Unsized", Unsized::getMemAccountName());
}

TEST(MemAccountingTest, ObjectsAndArraysStandUnderTheAccountOfTheirClass) {
    auto* pSized = new Sized;
    expectAccount("MemAccountingTest.Sized", 1, sizeof(Sized), 1);
    delete pSized;
    auto* pUnsized = new Unsized;
    auto* pArray = new Unsized[3];
    expectAccount("MemAccountingTest.Unsized", 2, 0, 2);
    delete[] pArray;
    delete pUnsized;
    expectAccount("MemAccountingTest.Sized", 0, 0, 1);
    expectAccount("MemAccountingTest.Unsized", 0, 0, 2);
}

TEST(MemAccountingTest, ADerivedClassStandsUnderTheAccountOfItsBase) {
    const std::size_t uiBefore = MemAccounts::get("MemAccountingTest.Sized").totalBlocks;
    Sized* p = new BiggerSized;
    expectAccount("MemAccountingTest.Sized", 1, sizeof(BiggerSized), uiBefore + 1);
    delete p;
    expectAccount("MemAccountingTest.Sized", 0, 0, uiBefore + 1);
}

TEST(MemAccountingTest, PlacementAllocatesNothing) {
    const std::size_t uiBefore = MemAccounts::get("MemAccountingTest.Unsized").totalBlocks;
    alignas(Unsized) unsigned char place[sizeof(Unsized)];
    auto* p = new (place) Unsized;
    EXPECT_EQ(static_cast<void*>(place), static_cast<void*>(p));
    p->~Unsized();
    EXPECT_EQ(uiBefore, MemAccounts::get("MemAccountingTest.Unsized").totalBlocks);
}

struct Huge {
    VELMORA_MEM_ACCOUNT("MemAccountingTest.Huge")
    Huge() { ++s_iConstructed; }
    static int s_iConstructed;
    char m_c = 0;
};
int Huge::s_iConstructed = 0;

TEST(MemAccountingTest, ExhaustedMemoryGivesNullAndConstructsNothing) {
    volatile std::size_t uiCount = PTRDIFF_MAX - 64;
    const Huge* p = new Huge[uiCount];
    EXPECT_EQ(nullptr, p);
    EXPECT_EQ(0, Huge::s_iConstructed);
    delete[] p;
}

} // namespace
} // namespace Velmora
