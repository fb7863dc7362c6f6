#include <velmora/math/xpr/ParentList.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/math/xpr/ConstantImpl.h>

namespace Velmora::Math::Xpr {
namespace {

using Parents = std::vector<ExpressionBaseImpl*>;

class ParentListTest : public testing::Test {
protected:
    static constexpr std::size_t NodeCount = 40;

    ParentListTest() {
        for (std::size_t ui = 0; ui != NodeCount; ++ui) {
            m_vNodes.push_back(std::make_unique<ConstantImpl>(DoubleVector{1.0}));
            m_vParents.push_back(m_vNodes.back().get());
        }
    }

    Parents entries() const { return listOf(m_List.begin(), m_List.end()); }
    Parents sealedEntries() const { return listOf(m_List.begin(), m_List.sealedEnd()); }

    ParentList m_List;
    std::vector<std::unique_ptr<ConstantImpl>> m_vNodes;
    Parents m_vParents;

private:
    static Parents listOf(const ParentList::Entry* in_pBegin, const ParentList::Entry* in_pEnd) {
        Parents vEntries;
        std::transform(in_pBegin, in_pEnd, std::back_inserter(vEntries),
                       [](const auto& in_pEntry) { return in_pEntry.get(); });
        return vEntries;
    }
};

TEST_F(ParentListTest, TheFirstEntryOfAParentIsRemoved) {
    for (const std::size_t uiParent : {0U, 1U, 0U, 2U}) {
        m_List.add(m_vParents[uiParent]);
    }
    EXPECT_TRUE(m_List.removeFirst(*m_vParents[0]));
    EXPECT_EQ(entries(), (Parents{m_vParents[1], m_vParents[0], m_vParents[2]}));
    EXPECT_FALSE(m_List.removeFirst(*m_vParents[3]));
    EXPECT_EQ(m_List.size(), 3U);
}

TEST_F(ParentListTest, EntriesBehindTheFirstAreReplaced) {
    for (const std::size_t uiParent : {0U, 1U, 0U, 0U}) {
        m_List.add(m_vParents[uiParent]);
    }
    m_List.replaceBehind(1, *m_vParents[0], *m_vParents[5]);
    EXPECT_EQ(entries(), (Parents{m_vParents[0], m_vParents[1], m_vParents[5], m_vParents[5]}));
}

TEST_F(ParentListTest, WhatCameAfterSealingStandsBehind) {
    m_List.add(m_vParents[0]);
    m_List.add(m_vParents[1]);
    m_List.seal();
    m_List.add(m_vParents[0]);
    EXPECT_EQ(sealedEntries(), (Parents{m_vParents[0], m_vParents[1]}));
    EXPECT_TRUE(m_List.removeFirst(*m_vParents[0]));
    EXPECT_EQ(sealedEntries(), Parents{m_vParents[1]});
    EXPECT_TRUE(m_List.removeFirst(*m_vParents[0]));
    EXPECT_EQ(sealedEntries(), Parents{m_vParents[1]});
    EXPECT_EQ(entries(), Parents{m_vParents[1]});
}

/// The list as it would be without an index.
class PlainList {
public:
    void add(ExpressionBaseImpl* in_pParent) { m_vEntries.push_back(in_pParent); }

    bool removeFirst(const ExpressionBaseImpl* in_pParent) {
        const auto ite = std::find(m_vEntries.begin(), m_vEntries.end(), in_pParent);
        if (ite == m_vEntries.end()) {
            return false;
        }
        m_uiSealed -= static_cast<std::size_t>(ite - m_vEntries.begin()) < m_uiSealed ? 1 : 0;
        m_vEntries.erase(ite);
        return true;
    }

    void replaceBehind(std::size_t in_uiKept, const ExpressionBaseImpl* in_pParent,
                       ExpressionBaseImpl* in_pOther) {
        for (ExpressionBaseImpl*& pEntry : m_vEntries) {
            if (pEntry == in_pParent) {
                pEntry = in_uiKept == 0 ? in_pOther : pEntry;
                in_uiKept -= in_uiKept == 0 ? 0 : 1;
            }
        }
    }

    void seal() { m_uiSealed = m_vEntries.size(); }

    Parents sealedEntries() const {
        return Parents(m_vEntries.begin(),
                       m_vEntries.begin() + static_cast<std::ptrdiff_t>(m_uiSealed));
    }

    Parents m_vEntries;
    std::size_t m_uiSealed = 0;
};

/// How often somebody looks between the changes decides whether there are holes and an index.
class RandomParentListTest : public ParentListTest, public testing::WithParamInterface<unsigned> {};

TEST_P(RandomParentListTest, IsWhatAPlainListWouldBe) {
    std::mt19937 random(GetParam());
    const auto below = [&](std::size_t in_uiLimit) {
        return std::uniform_int_distribution<std::size_t>(0, in_uiLimit - 1)(random);
    };
    PlainList plain;
    for (int iChange = 0; iChange != 20000; ++iChange) {
        ExpressionBaseImpl* const pParent = m_vParents[below(NodeCount)];
        const std::size_t uiChoice = below(1000);
        if (uiChoice < 480) {
            m_List.add(pParent);
            plain.add(pParent);
        } else if (uiChoice < 985) {
            ASSERT_EQ(m_List.removeFirst(*pParent), plain.removeFirst(pParent));
        } else if (uiChoice < 992) {
            const std::size_t uiKept = below(4);
            m_List.replaceBehind(uiKept, *pParent, *m_vParents.front());
            plain.replaceBehind(uiKept, pParent, m_vParents.front());
        } else {
            m_List.seal();
            plain.seal();
        }
        ASSERT_EQ(m_List.size(), plain.m_vEntries.size());
        if (below(GetParam()) == 0) {
            ASSERT_EQ(entries(), plain.m_vEntries) << iChange;
            ASSERT_EQ(sealedEntries(), plain.sealedEntries()) << iChange;
        }
        // Long lists now and then: only they have an index.
        if (iChange % 5000 == 0) {
            for (int i = 0; i != 500; ++i) {
                m_List.add(m_vParents[static_cast<std::size_t>(i) % NodeCount]);
                plain.add(m_vParents[static_cast<std::size_t>(i) % NodeCount]);
            }
        }
    }
    EXPECT_EQ(entries(), plain.m_vEntries);
    EXPECT_EQ(sealedEntries(), plain.sealedEntries());
}

INSTANTIATE_TEST_SUITE_P(LooksAfterChanges, RandomParentListTest,
                         testing::Values(1U, 2U, 50U, 1000U, 5000U));

} // namespace
} // namespace Velmora::Math::Xpr
