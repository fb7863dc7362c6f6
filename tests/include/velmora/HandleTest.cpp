#include <velmora/CountedObjPtr.h>
#include <velmora/Handle.h>
#include <velmora/MemAccounting.h>
#include <velmora/MemAccounts.h>
#include <velmora/TSHandle.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace Velmora {
namespace {

struct Shape : virtual Object {};
struct Named : virtual Object {};
struct Other : virtual Object {};

struct Circle : Shape, Named {
    explicit Circle(int& inout_iAlive) : m_iAlive(inout_iAlive) { ++m_iAlive; }
    ~Circle() override { --m_iAlive; }

    int& m_iAlive;
};

struct HandleFamily {
    template <class T>
    using Ptr = Handle<T>;
};
struct CountedObjPtrFamily {
    template <class T>
    using Ptr = CountedObjPtr<T>;
};
struct TSHandleFamily {
    template <class T>
    using Ptr = TSHandle<T>;
};

/// What the three counting pointers have in common.
template <class Family>
class CountingPointerTest : public testing::Test {
protected:
    template <class T>
    using Ptr = typename Family::template Ptr<T>;

    Circle* newCircle() { return new Circle(m_iAlive); }

    int m_iAlive = 0;
};

using Families = testing::Types<HandleFamily, CountedObjPtrFamily, TSHandleFamily>;
TYPED_TEST_SUITE(CountingPointerTest, Families);

#define PTR(T) typename TestFixture::template Ptr<T>

TYPED_TEST(CountingPointerTest, DefaultIsNullWithoutCounter) {
    const PTR(Circle) p;
    EXPECT_TRUE(p.isNull());
    EXPECT_EQ(0, p.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, NullPointerGetsNoCounter) {
    const PTR(Circle) p(nullptr);
    EXPECT_TRUE(p.isNull());
    EXPECT_EQ(0, p.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, CopiesShareTheCountAndTheLastOneDestroys) {
    {
        const PTR(Circle) p(this->newCircle());
        EXPECT_EQ(1, p.getReferenceCount());
        {
            const PTR(Circle) copy(p);
            EXPECT_EQ(2, p.getReferenceCount());
            EXPECT_EQ(2, copy.getReferenceCount());
            EXPECT_EQ(p, copy);
        }
        EXPECT_EQ(1, p.getReferenceCount());
        EXPECT_EQ(1, this->m_iAlive);
    }
    EXPECT_EQ(0, this->m_iAlive);
}

TYPED_TEST(CountingPointerTest, MoveTakesTheShareOver) {
    PTR(Circle) p(this->newCircle());
    PTR(Circle) moved(std::move(p));
    EXPECT_EQ(1, moved.getReferenceCount());
    PTR(Circle) assigned;
    assigned = std::move(moved);
    EXPECT_EQ(1, assigned.getReferenceCount());
    EXPECT_EQ(1, this->m_iAlive);
}

TYPED_TEST(CountingPointerTest, AssignmentReleasesTheOldObject) {
    PTR(Circle) a(this->newCircle());
    PTR(Circle) b(this->newCircle());
    a = b;
    EXPECT_EQ(1, this->m_iAlive);
    EXPECT_EQ(2, a.getReferenceCount());
    a = PTR(Circle)();
    EXPECT_TRUE(a.isNull());
    EXPECT_EQ(1, b.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, AssignmentOfTheSameObjectChangesNoCount) {
    PTR(Circle) a(this->newCircle());
    PTR(Circle) b(a);
    a = b;
    EXPECT_EQ(2, a.getReferenceCount());
    const PTR(Circle)& self = a;
    a = self;
    EXPECT_EQ(2, b.getReferenceCount());
    EXPECT_EQ(1, this->m_iAlive);
}

TYPED_TEST(CountingPointerTest, AssignmentBetweenTwoCountersOfOneObjectDoesNothing) {
    // Two pointers made of nulls with two counters are the harmless case of it.
    PTR(Circle) a(this->newCircle());
    PTR(Circle) b(this->newCircle());
    a = nullptr;
    b = nullptr;
    const PTR(Circle) sharesB(b);
    a = b;
    EXPECT_EQ(1, a.getReferenceCount());
    EXPECT_EQ(2, b.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, AssignmentFromWithinTheOldObjectIsSafe) {
    struct Link : virtual Object {
        PTR(Link) m_pNext;
    };
    PTR(Link) p(new Link);
    p->m_pNext = new Link;
    Link* pSecond = p->m_pNext.get();
    p = p->m_pNext;
    EXPECT_EQ(pSecond, p.get());
    EXPECT_EQ(1, p.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, ResettingTheLastOneToNullKeepsTheCounter) {
    PTR(Circle) p(this->newCircle());
    p = nullptr;
    EXPECT_EQ(0, this->m_iAlive);
    EXPECT_TRUE(p.isNull());
    EXPECT_EQ(1, p.getReferenceCount());

    const PTR(Circle) other(this->newCircle());
    p = other;
    EXPECT_EQ(1, this->m_iAlive);
    EXPECT_EQ(2, p.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, ResettingOneOfTwoToNullGivesItANewCounter) {
    PTR(Circle) a(this->newCircle());
    const PTR(Circle) b(a);
    a = nullptr;
    EXPECT_TRUE(a.isNull());
    EXPECT_EQ(1, a.getReferenceCount());
    EXPECT_EQ(1, b.getReferenceCount());
    EXPECT_EQ(1, this->m_iAlive);
}

TYPED_TEST(CountingPointerTest, ResettingTheLastOneKeepsItsCounterForTheNewObject) {
    PTR(Circle) p(this->newCircle());
    p = this->newCircle();
    EXPECT_EQ(1, this->m_iAlive);
    EXPECT_EQ(1, p.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, ResettingOneOfTwoLeavesTheOtherItsObject) {
    PTR(Circle) a(this->newCircle());
    const PTR(Circle) b(a);
    a = this->newCircle();
    EXPECT_EQ(2, this->m_iAlive);
    EXPECT_EQ(1, a.getReferenceCount());
    EXPECT_EQ(1, b.getReferenceCount());
    EXPECT_NE(a, b);
}

TYPED_TEST(CountingPointerTest, ResettingWithoutACounterMakesOneForAnObjectOnly) {
    PTR(Circle) p;
    p = nullptr;
    EXPECT_EQ(0, p.getReferenceCount());
    p = this->newCircle();
    EXPECT_EQ(1, p.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, ResettingToTheHeldObjectKeepsIt) {
    PTR(Circle) p(this->newCircle());
    p = p.get();
    EXPECT_EQ(1, this->m_iAlive);
    EXPECT_EQ(1, p.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, CastsInEveryDirectionShareTheCount) {
    const PTR(Circle) circle(this->newCircle());
    const PTR(Shape) shape(circle);
    const PTR(Named) named(shape);
    const PTR(Circle) back(named);
    EXPECT_EQ(circle, back);
    EXPECT_EQ(4, circle.getReferenceCount());
    EXPECT_EQ(4, named.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, CastOfATemporaryTakesItsShareOver) {
    PTR(Shape) shape(this->newCircle());
    const PTR(Circle) circle(std::move(shape));
    EXPECT_FALSE(circle.isNull());
    EXPECT_EQ(1, circle.getReferenceCount());
    EXPECT_EQ(1, this->m_iAlive);
}

TYPED_TEST(CountingPointerTest, CastOfNullGivesNullWithoutCounter) {
    PTR(Shape) shape(this->newCircle());
    shape = nullptr;
    ASSERT_EQ(1, shape.getReferenceCount());
    const PTR(Circle) circle(shape);
    EXPECT_TRUE(circle.isNull());
    EXPECT_EQ(0, circle.getReferenceCount());
    EXPECT_EQ(1, shape.getReferenceCount());
}

TYPED_TEST(CountingPointerTest, FailedCastLeavesTheSourceAlone) {
    PTR(Shape) shape(this->newCircle());
    const PTR(Other) other(shape);
    EXPECT_TRUE(other.isNull());
    EXPECT_EQ(0, other.getReferenceCount());
    EXPECT_EQ(1, shape.getReferenceCount());

    const PTR(Other) moved(std::move(shape));
    EXPECT_TRUE(moved.isNull());
    EXPECT_EQ(1, shape.getReferenceCount());
    EXPECT_EQ(1, this->m_iAlive);
}

#undef PTR

struct Accounted : virtual Object {
    VELMORA_MEM_ACCOUNT("HandleTest.Accounted")
    double m_d = 0.0;
};
struct AccountedMore : Accounted, Named {
    VELMORA_MEM_ACCOUNT("HandleTest.AccountedMore")
    double m_v[4] = {};
};

TEST(HandleTest, DestroysThroughTheObjectPartWhateverItPointsAt) {
    {
        const Handle<Named> p(new AccountedMore);
        const MemAccount held = MemAccounts::get("HandleTest.AccountedMore");
        EXPECT_EQ(1u, held.liveBlocks);
        EXPECT_EQ(sizeof(AccountedMore), held.liveBytes);
    }
    const MemAccount gone = MemAccounts::get("HandleTest.AccountedMore");
    EXPECT_EQ(0u, gone.liveBlocks);
    EXPECT_EQ(0u, gone.liveBytes);
    EXPECT_EQ(0u, MemAccounts::get("HandleTest.Accounted").totalBlocks);
}

TEST(HandleTest, CountersStandUnderTheirAccount) {
    const MemAccount before = MemAccounts::get("ReferenceCount");
    {
        const Handle<Accounted> p(new Accounted);
        const Handle<Accounted> copy(p);
        const MemAccount held = MemAccounts::get("ReferenceCount");
        EXPECT_EQ(before.liveBlocks + 1, held.liveBlocks);
        EXPECT_EQ(before.liveBytes + 4, held.liveBytes);
    }
    EXPECT_EQ(before.liveBlocks, MemAccounts::get("ReferenceCount").liveBlocks);
}

/// A counter for which memory is exhausted.
struct NoCount {
    static NoCount* create() { return nullptr; }
    static void destroy(NoCount*) {}
    void increment() {}
    void decrement() {}
    bool isLast() const { return false; }
    int get() const { return 0; }
};

TEST(HandleTest, WithoutACounterTheObjectIsNeverDestroyed) {
    int iAlive = 0;
    Circle circle(iAlive);
    {
        const Handle<Circle, NoCount> p(&circle);
        const Handle<Circle, NoCount> copy(p);
        EXPECT_FALSE(copy.isNull());
        EXPECT_EQ(0, copy.getReferenceCount());
    }
    EXPECT_EQ(1, iAlive);
}

TEST(HandleTest, ConvertsImplicitlyBetweenInterfaces) {
    int iAlive = 0;
    const auto isCircle = [](const Handle<Circle>& in_p) { return !in_p.isNull(); };
    EXPECT_TRUE(isCircle(Handle<Shape>(new Circle(iAlive))));
    EXPECT_FALSE(isCircle(Handle<Other>(new Other)));
    EXPECT_EQ(0, iAlive);
}

struct Closer {
    void operator()(std::vector<int>* in_p) const { in_p->clear(); }
};

TEST(CountedObjPtrTest, OwnsAClassThatIsNoObject) {
    const CountedObjPtr<std::vector<int>> p(new std::vector<int>{1, 2});
    const CountedObjPtr<std::vector<int>> copy(p);
    EXPECT_EQ(2u, copy->size());
    EXPECT_EQ(2, p.getReferenceCount());
}

TEST(CountedObjPtrTest, TheDeleterSaysHowTheObjectGoes) {
    std::vector<int> v{1, 2};
    {
        const CountedObjPtr<std::vector<int>, ReferenceCount, Closer> p(&v);
        const auto copy = p;
        EXPECT_EQ(2u, v.size());
    }
    EXPECT_TRUE(v.empty());
}

} // namespace
} // namespace Velmora
