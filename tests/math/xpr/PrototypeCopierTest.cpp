#include "math/xpr/src/PrototypeCopier.h"

#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/src/UncheckedLinks.h"
#include "support/GraphTest.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class PrototypeCopierTest : public GraphTest {
protected:
    static Handle<VariableImpl> variable(const Handle<Expression>& in_pValue) {
        const Handle<VariableImpl> pVariable(new VariableImpl);
        Variable& variable = *pVariable;
        variable.setValue(in_pValue);
        return pVariable;
    }

    /// So many nodes, a constant below variables.
    static Handle<VariableImpl> chain(std::size_t in_uiNodes) {
        Handle<VariableImpl> pTop = variable(Handle<Expression>(constant({1.0})));
        for (std::size_t ui = 2; ui != in_uiNodes; ++ui) {
            const UncheckedLinks unchecked;
            pTop = variable(Handle<Expression>(pTop));
        }
        return pTop;
    }
};

TEST_F(PrototypeCopierTest, NodesOfAllCopiesCountTogether) {
    const Handle<ExpressionBaseImpl> pPrototype(chain(PrototypeCopier::MaxNodes / 2 + 1));
    PrototypeCopier copier;
    EXPECT_TRUE(copier.fits(pPrototype));
    EXPECT_FALSE(copier.copy(pPrototype).isNull());
    EXPECT_FALSE(copier.fits(pPrototype));
    EXPECT_TRUE(copier.copy(pPrototype).isNull());
}

TEST_F(PrototypeCopierTest, WhatStandsBelowASharedVariableCountsForNoCopy) {
    constexpr std::size_t Below = 1000;
    const Handle<VariableImpl> pShared = chain(Below);
    const Handle<ExpressionBaseImpl> pPrototype(variable(Handle<Expression>(pShared)));
    PrototypeCopier copier;
    copier.share(*pShared);
    for (std::size_t ui = 0; ui <= PrototypeCopier::MaxNodes / Below; ++ui) {
        const Handle<ExpressionBaseImpl> pCopy(copier.copy(pPrototype));
        ASSERT_FALSE(pCopy.isNull()) << ui;
        ASSERT_EQ(childrenOf(*pCopy), Nodes{pShared.get()});
    }
}

} // namespace

} // namespace Velmora::Math::Xpr
