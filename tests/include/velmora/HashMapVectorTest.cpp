#include <velmora/Handle.h>
#include <velmora/HashMapVector.h>
#include <velmora/Object.h>

#include <gtest/gtest.h>

#include "support/AllocationCounter.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Velmora {
namespace {

/// Puts every key in one place of the index.
struct EqualHash {
    std::uint32_t operator()(const std::string&) const { return 1; }
};

/// Falls as the key's number grows.
struct FallingHash {
    std::uint32_t operator()(const std::string& in_strKey) const {
        return 1000000u - static_cast<std::uint32_t>(std::stoul(in_strKey));
    }
};

TEST(HashMapVectorTest, TheHashOfAText) {
    const StringHash hash;
    EXPECT_EQ(0u, hash(""));
    EXPECT_EQ(583u, hash("ab"));
    EXPECT_EQ(0xE4u, hash("\xE4"));
    // 2^32 is passed without a trace.
    std::uint32_t uiExpected = 0;
    for (int i = 0; i < 40; ++i) {
        uiExpected = uiExpected * 5 + 'z';
    }
    EXPECT_EQ(uiExpected, hash(std::string(40, 'z')));
}

/// The same behaviour below and beyond the size from which there is an index, and under every hash.
template <class Hash>
class HashMapVectorHashTest : public testing::Test {};
using Hashes = testing::Types<StringHash, EqualHash, FallingHash>;
TYPED_TEST_SUITE(HashMapVectorHashTest, Hashes);

TYPED_TEST(HashMapVectorHashTest, KeepsTheOrderOfInsertionAndFindsEveryKey) {
    HashMapVector<std::string, int, TypeParam> map;
    for (int i = 0; i < 300; ++i) {
        const std::string strKey = std::to_string(i * 7 % 300);
        EXPECT_EQ(map.end(), map.find(strKey));
        const auto inserted = map.insert(strKey, i);
        EXPECT_TRUE(inserted.second);
        EXPECT_EQ(strKey, inserted.first->first);
        EXPECT_EQ(i, inserted.first->second);
        EXPECT_EQ(static_cast<std::size_t>(i) + 1, map.size());
    }
    int i = 0;
    for (const auto& entry : map) {
        EXPECT_EQ(std::to_string(i * 7 % 300), entry.first);
        EXPECT_EQ(i, entry.second);
        EXPECT_EQ(i, map.find(entry.first)->second);
        ++i;
    }
    EXPECT_EQ(300, i);
    EXPECT_EQ(map.end(), map.find("300"));
}

TYPED_TEST(HashMapVectorHashTest, ASecondInsertIsRefusedAndLeavesTheFirstValue) {
    for (const int iSize : {1, 8, 9, 200}) {
        HashMapVector<std::string, int, TypeParam> map;
        for (int i = 0; i < iSize; ++i) {
            map.insert(std::to_string(i), i);
        }
        for (int i = 0; i < iSize; ++i) {
            const auto inserted = map.insert(std::to_string(i), -1);
            EXPECT_FALSE(inserted.second);
            EXPECT_EQ(i, inserted.first->second);
        }
        EXPECT_EQ(static_cast<std::size_t>(iSize), map.size());
    }
}

TYPED_TEST(HashMapVectorHashTest, CopiesHaveEntriesOfTheirOwn) {
    for (const int iSize : {0, 3, 50}) {
        HashMapVector<std::string, int, TypeParam> map;
        for (int i = 0; i < iSize; ++i) {
            map.insert(std::to_string(i), i);
        }
        HashMapVector<std::string, int, TypeParam> copy(map);
        HashMapVector<std::string, int, TypeParam> assigned;
        assigned.insert("1000", 1000);
        assigned = map;
        for (auto& entry : map) {
            entry.second = -1;
        }
        map.clear();
        for (auto* pCopy : {&copy, &assigned}) {
            ASSERT_EQ(static_cast<std::size_t>(iSize), pCopy->size());
            for (int i = 0; i < iSize; ++i) {
                ASSERT_NE(pCopy->end(), pCopy->find(std::to_string(i)));
                EXPECT_EQ(i, pCopy->find(std::to_string(i))->second);
            }
            EXPECT_TRUE(pCopy->insert("2000", 2000).second);
            EXPECT_EQ(2000, pCopy->find("2000")->second);
        }
    }
}

TYPED_TEST(HashMapVectorHashTest, ClearEmptiesTheMapAndItsIndex) {
    HashMapVector<std::string, int, TypeParam> map;
    for (int iRound = 0; iRound < 2; ++iRound) {
        for (int i = 0; i < 20; ++i) {
            EXPECT_TRUE(map.insert(std::to_string(i), i).second);
        }
        map.clear();
        EXPECT_EQ(0u, map.size());
        EXPECT_TRUE(map.empty());
        EXPECT_EQ(map.begin(), map.end());
        EXPECT_EQ(map.end(), map.find("3"));
    }
}

TEST(HashMapVectorTest, SelfAssignmentKeepsTheEntries) {
    HashMapVector<std::string, int> map;
    map.insert("a", 1);
    const auto& self = map;
    map = self;
    ASSERT_EQ(1u, map.size());
    EXPECT_EQ(1, map.find("a")->second);
}

TEST(HashMapVectorTest, AMoveTakesTheEntriesOver) {
    HashMapVector<std::string, int> map;
    map.insert("a", 1);
    const auto* pEntry = &*map.begin();
    HashMapVector<std::string, int> moved(std::move(map));
    HashMapVector<std::string, int> assigned;
    assigned = std::move(moved);
    EXPECT_EQ(pEntry, &*assigned.begin());
}

TEST(HashMapVectorTest, EntriesAndIteratorsStayWhileTheMapGrows) {
    HashMapVector<std::string, int> map;
    const auto it = map.insert("first", 1).first;
    auto* pEntry = &*it;
    for (int i = 0; i < 1000; ++i) {
        map.insert(std::to_string(i), i);
    }
    EXPECT_EQ(pEntry, &*it);
    EXPECT_EQ(pEntry, &*map.find("first"));
}

TEST(HashMapVectorTest, EveryEntryStaysWhereItIsHoweverTheMapGrows) {
    HashMapVector<int, int, std::hash<int>> map;
    std::vector<const void*> vEntries;
    for (int i = 0; i < 1500; ++i) {
        vEntries.push_back(&*map.insert(i, -i).first);
        ASSERT_EQ(vEntries.size(), map.size());
    }
    const HashMapVector<int, int, std::hash<int>> copy(map);
    int iExpected = 0;
    for (const auto& entry : map) {
        ASSERT_EQ(iExpected, entry.first);
        ASSERT_EQ(vEntries[static_cast<std::size_t>(iExpected)], &entry);
        ASSERT_EQ(&entry, &*map.find(iExpected));
        ASSERT_EQ(-iExpected, copy.find(iExpected)->second);
        ++iExpected;
    }
    EXPECT_EQ(1500, iExpected);
}

TEST(HashMapVectorTest, ValuesAreChangedThroughAnIterator) {
    HashMapVector<std::string, int> map;
    map.insert("a", 1);
    map.find("a")->second = 5;
    const auto& constMap = map;
    const HashMapVectorConstIterator<std::string, int, StringHash> it = map.begin();
    EXPECT_EQ(it, constMap.begin());
    EXPECT_EQ(5, it->second);
    EXPECT_EQ(5, constMap.find("a")->second);
    EXPECT_EQ(constMap.end(), constMap.find("b"));
}

TEST(HashMapVectorTest, IteratorsWalkBothWays) {
    HashMapVector<std::string, int> map;
    map.insert("a", 1);
    map.insert("b", 2);
    auto it = map.end();
    EXPECT_EQ("b", (--it)->first);
    EXPECT_EQ("b", (it--)->first);
    EXPECT_EQ("a", (it++)->first);
    EXPECT_EQ(map.end(), ++it);
    const auto& constMap = map;
    auto constIt = constMap.end();
    EXPECT_EQ("b", (--constIt)->first);
    EXPECT_EQ("b", (constIt--)->first);
    EXPECT_EQ("a", (constIt++)->first);
    EXPECT_EQ(constMap.end(), ++constIt);
}

TEST(HashMapVectorTest, AnEmptyMapAllocatesNothing) {
    const std::string strKey("key");
    const Testing::AllocationCounter counter;
    const HashMapVector<std::string, int> map;
    const HashMapVector<std::string, int> copy(map);
    const bool bFound = copy.find(strKey) != copy.end();
    const std::size_t uiAllocations = counter.allocations();
    EXPECT_FALSE(bFound);
    EXPECT_EQ(0u, uiAllocations);
}

struct Tracked : virtual Object {};

TEST(HashMapVectorTest, ClearAndDestructionReleaseTheValues) {
    const Handle<Tracked> p(new Tracked);
    {
        HashMapVector<std::string, Handle<Tracked>> map;
        map.insert("a", p);
        map.insert("a", p);
        EXPECT_EQ(2, p.getReferenceCount());
        map.clear();
        EXPECT_EQ(1, p.getReferenceCount());
        map.insert("b", p);
        EXPECT_EQ(2, p.getReferenceCount());
    }
    EXPECT_EQ(1, p.getReferenceCount());
}

} // namespace
} // namespace Velmora
