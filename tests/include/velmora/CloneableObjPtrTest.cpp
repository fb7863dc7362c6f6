#include <velmora/CloneableObjPtr.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/AssertionCapture.h"

namespace Velmora {
namespace {

struct Animal : virtual Cloneable {
    explicit Animal(int& inout_iAlive) : m_iAlive(inout_iAlive) { ++m_iAlive; }
    Animal(const Animal& in_rhs) : Object(), Cloneable(), m_iAlive(in_rhs.m_iAlive) { ++m_iAlive; }
    ~Animal() override { --m_iAlive; }
    Animal* clone() const override { return new Animal(*this); }

    int& m_iAlive;
};

struct Impostor : Animal {
    using Animal::Animal;
    // Its clone is an animal only.
};

class CloneableObjPtrTest : public testing::Test {
protected:
    int m_iAlive = 0;
    AssertionCapture m_assertions;
};

TEST_F(CloneableObjPtrTest, ACopyIsACloneAndDiesWithItsPointer) {
    {
        const CloneableObjPtr<Animal> p(new Animal(m_iAlive));
        const CloneableObjPtr<Animal> copy(p);
        EXPECT_NE(p.get(), copy.get());
        EXPECT_EQ(2, m_iAlive);
    }
    EXPECT_EQ(0, m_iAlive);
}

TEST_F(CloneableObjPtrTest, AssignmentDeletesTheOldObject) {
    CloneableObjPtr<Animal> p(new Animal(m_iAlive));
    const CloneableObjPtr<Animal> other(new Animal(m_iAlive));
    p = other;
    EXPECT_EQ(2, m_iAlive);
    EXPECT_NE(p.get(), other.get());
}

TEST_F(CloneableObjPtrTest, AssignmentFromNullDeletesTheObjectWithoutAssertion) {
    CloneableObjPtr<Animal> p(new Animal(m_iAlive));
    p = CloneableObjPtr<Animal>();
    EXPECT_TRUE(p.isNull());
    EXPECT_EQ(0, m_iAlive);

    p = new Animal(m_iAlive);
    const CloneableObjPtr<Animal> null;
    p = null;
    EXPECT_TRUE(p.isNull());
    EXPECT_EQ(0, m_iAlive);
    EXPECT_EQ(0u, m_assertions.count());
}

TEST_F(CloneableObjPtrTest, SelfAssignmentKeepsTheObject) {
    CloneableObjPtr<Animal> p(new Animal(m_iAlive));
    const Animal* pBefore = p.get();
    const CloneableObjPtr<Animal>& self = p;
    p = self;
    EXPECT_EQ(pBefore, p.get());
    EXPECT_EQ(1, m_iAlive);
}

TEST_F(CloneableObjPtrTest, ACloneOfAnotherClassFailsAnAssertionAndIsDropped) {
    const CloneableObjPtr<Impostor> p(new Impostor(m_iAlive));
    CloneableObjPtr<Impostor> copy;
    copy = p;
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(1, m_iAlive);
    EXPECT_THAT(m_assertions.expressions(), testing::ElementsAre("rhs.isNull() || m_ptr"));
}

TEST_F(CloneableObjPtrTest, AMoveDoesNotClone) {
    CloneableObjPtr<Animal> p(new Animal(m_iAlive));
    const Animal* pAnimal = p.get();
    CloneableObjPtr<Animal> moved(std::move(p));
    EXPECT_EQ(pAnimal, moved.get());
    CloneableObjPtr<Animal> assigned;
    assigned = std::move(moved);
    EXPECT_EQ(pAnimal, assigned.get());
    EXPECT_EQ(1, m_iAlive);
}

} // namespace
} // namespace Velmora
