#include <velmora/LimitedObjPtr.h>

#include <gtest/gtest.h>

namespace Velmora {
namespace {

struct Base : virtual Object {
    int m_i = 3;
};
struct Derived : Base {};

TEST(LimitedObjPtrTest, PointsWithoutOwning) {
    LimitedObjPtr<Base> p;
    EXPECT_TRUE(p.isNull());
    {
        const Handle<Derived> owner(new Derived);
        p = owner;
        EXPECT_EQ(1, owner.getReferenceCount());
        EXPECT_EQ(3, p->m_i);
        EXPECT_EQ(&(*p), owner.get());
        p = nullptr;
    }
    EXPECT_TRUE(p.isNull());
}

TEST(LimitedObjPtrTest, ConvertsFromAPointerToADerivedClass) {
    Derived derived;
    const LimitedObjPtr<Derived> pDerived(&derived);
    const LimitedObjPtr<Base> pBase(pDerived);
    EXPECT_EQ(pBase, LimitedObjPtr<Base>(&derived));
    EXPECT_NE(pBase, LimitedObjPtr<Base>());
}

} // namespace
} // namespace Velmora
