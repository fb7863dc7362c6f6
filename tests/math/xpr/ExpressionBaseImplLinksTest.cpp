#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <velmora/math/xpr/ParameterImpl.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

const char* const Self = "in_pChild->getId() != this->getId() && \"Can't loop on self!\"";
const char* const Loop = "!isParent( *in_pChild ) && \"Can't loop on a parent!\"";
const char* const Dependant = "!isDependantOf( in_pChild )";
const char* const NewSelf = "in_pNewChild->getId() != this->getId() && \"Can't loop on self!\"";
const char* const NewLoop = "!isParent( *in_pNewChild ) && \"Can't loop on a parent!\"";
const char* const NewDependant = "!isDependantOf( in_pNewChild )";
const char* const NotFound = "iteFound != m_Childs.end()";

class ExpressionBaseImplLinksTest : public GraphTest {
protected:
    Handle<RecordingNode> node(const char* in_szName = "node") {
        return Handle<RecordingNode>(new RecordingNode(in_szName, &m_vCalls));
    }

    Calls takeCalls() { return std::exchange(m_vCalls, Calls()); }

    static unsigned long add(RecordingNode& inout_Parent, const Handle<RecordingNode>& in_pChild) {
        return inout_Parent.addChild(Handle<ExpressionBaseImpl>(in_pChild), true);
    }

    Calls m_vCalls;
};

/// A constant that shows what its derived classes may call.
class OpenConstant : public ConstantImpl {
public:
    OpenConstant() : ConstantImpl(DoubleVector{1.0}) {}
    using ConstantImpl::isParent;
};

TEST_F(ExpressionBaseImplLinksTest, ChildIsFoundByItsNumber) {
    const auto pParent = node();
    const auto pFirst = node();
    const auto pSecond = node();
    EXPECT_EQ(add(*pParent, pFirst), 0u);
    EXPECT_EQ(add(*pParent, pSecond), 1u);
    EXPECT_EQ(pParent->getChildAt(0).get(), pFirst.get());
    EXPECT_EQ(pParent->getChildAt(1).get(), pSecond.get());
}

TEST_F(ExpressionBaseImplLinksTest, NumbersOutOfRangeGiveNullAndNoMessage) {
    const auto pParent = node();
    add(*pParent, node());
    EXPECT_TRUE(pParent->getChildAt(-1).isNull());
    EXPECT_TRUE(pParent->getChildAt(1).isNull());
    EXPECT_TRUE(pParent->getChildAt(4294967295L).isNull());
    EXPECT_TRUE(node()->getChildAt(0).isNull());
}

TEST_F(ExpressionBaseImplLinksTest, NodeIsNoChildOfItself) {
    const auto pNode = node();
    EXPECT_EQ(add(*pNode, pNode), 4294967295u);
    EXPECT_EQ(takeAssertions(), Texts{Self});
    EXPECT_EQ(parentsOf(*pNode), Nodes());
    EXPECT_EQ(childrenOf(*pNode), Nodes());
}

TEST_F(ExpressionBaseImplLinksTest, NodeBecomesAChildOfItselfWithoutTheCheck) {
    const auto pNode = node();
    EXPECT_EQ(pNode->addChild(Handle<ExpressionBaseImpl>(pNode), false), 0u);
    EXPECT_EQ(parentsOf(*pNode), Nodes{pNode.get()});
    EXPECT_EQ(childrenOf(*pNode), Nodes{pNode.get()});
    // Opens the loop, which would keep the node alive.
    EXPECT_EQ(pNode->replaceChild(*pNode, Handle<ExpressionBaseImpl>(node()), true), 0u);
}

TEST_F(ExpressionBaseImplLinksTest, TransitiveParentIsRefusedAsAChild) {
    const auto pTop = node();
    const auto pMiddle = node();
    const auto pBottom = node();
    add(*pTop, pMiddle);
    add(*pMiddle, pBottom);
    EXPECT_EQ(add(*pBottom, pTop), 4294967295u);
    EXPECT_EQ(takeAssertions(), Texts{Loop});
    EXPECT_EQ(add(*pMiddle, pTop), 4294967295u);
    EXPECT_EQ(takeAssertions(), Texts{Loop});
    EXPECT_EQ(parentsOf(*pTop), Nodes());
    EXPECT_EQ(childrenOf(*pBottom), Nodes());
}

TEST_F(ExpressionBaseImplLinksTest, EachNodeOfALongChainIsRefusedAsAChildOfItsLast) {
    std::vector<Handle<RecordingNode>> vChain{node()};
    for (int i = 0; i != 40; ++i) {
        vChain.push_back(node());
        add(*vChain[vChain.size() - 2], vChain.back());
        for (std::size_t ui = 0; ui + 1 != vChain.size(); ++ui) {
            EXPECT_EQ(add(*vChain.back(), vChain[ui]), 4294967295u);
            EXPECT_EQ(takeAssertions(), Texts{Loop}) << ui << " above " << i;
        }
    }
}

TEST_F(ExpressionBaseImplLinksTest, VariableIsFoundHoweverFarAboveItStands) {
    const Handle<VariableImpl> pVariable(new VariableImpl);
    const Handle<ExpressionBaseImpl> pTop(pVariable);
    std::vector<Handle<RecordingNode>> vChain{node()};
    Variable& variable = *pVariable;
    EXPECT_TRUE(variable.setValue(Handle<Expression>(vChain.front())));
    for (int i = 0; i != 40; ++i) {
        vChain.push_back(node());
        add(*vChain[vChain.size() - 2], vChain.back());
        EXPECT_TRUE(vChain.back()->isDependantOf(pTop)) << i;
        EXPECT_FALSE(vChain.back()->isDependantOf(Handle<ExpressionBaseImpl>(new VariableImpl)));
    }
}

TEST_F(ExpressionBaseImplLinksTest, ChildThatAHookRecognisesIsRefused) {
    const auto pTop = node();
    const auto pBottom = node();
    const auto pChild = node();
    add(*pTop, pBottom);
    pTop->m_bIsDependant = true;
    EXPECT_EQ(add(*pBottom, pChild), 4294967295u);
    EXPECT_EQ(takeAssertions(), Texts{Dependant});
    EXPECT_EQ(parentsOf(*pChild), Nodes());
}

TEST_F(ExpressionBaseImplLinksTest, OnlyTheFirstFailedCheckIsReported) {
    const auto pTop = node();
    const auto pBottom = node();
    add(*pTop, pBottom);
    pTop->m_bIsDependant = true;
    add(*pBottom, pTop);
    EXPECT_EQ(takeAssertions(), Texts{Loop});
    add(*pTop, pTop);
    EXPECT_EQ(takeAssertions(), Texts{Self});
}

TEST_F(ExpressionBaseImplLinksTest, NoCheckRunsUnlessAskedFor) {
    const auto pParent = node();
    const auto pChild = node();
    pParent->m_bIsDependant = true;
    EXPECT_EQ(pParent->addChild(Handle<ExpressionBaseImpl>(pChild), false), 0u);
    EXPECT_EQ(takeCalls(), Calls());
}

TEST_F(ExpressionBaseImplLinksTest, NullChildIsRefused) {
    const auto pParent = node();
    EXPECT_EQ(pParent->addChild(Handle<ExpressionBaseImpl>(), false), 4294967295u);
    EXPECT_EQ(takeAssertions(), Texts{"!in_pChild.isNull()"});
}

TEST_F(ExpressionBaseImplLinksTest, ChildAddedTwiceStandsTwiceInBothLists) {
    const auto pParent = node();
    const auto pChild = node();
    EXPECT_EQ(add(*pParent, pChild), 0u);
    EXPECT_EQ(add(*pParent, pChild), 1u);
    EXPECT_EQ(parentsOf(*pChild), (Nodes{pParent.get(), pParent.get()}));
    EXPECT_EQ(childrenOf(*pParent), (Nodes{pChild.get(), pChild.get()}));
    EXPECT_EQ(pChild.getReferenceCount(), 3);
}

TEST_F(ExpressionBaseImplLinksTest, LinkingInvalidatesNothing) {
    const auto pParent = node();
    const auto pChild = node();
    evaluated(*pParent);
    evaluated(*pChild);
    add(*pParent, pChild);
    EXPECT_TRUE(pParent->isValid());
    EXPECT_TRUE(pChild->isValid());
}

TEST_F(ExpressionBaseImplLinksTest, OnlyDirectChildrenAreChildren) {
    const auto pTop = node();
    const auto pMiddle = node();
    const auto pBottom = node();
    add(*pTop, pMiddle);
    add(*pMiddle, pBottom);
    EXPECT_TRUE(pTop->isChild(*pMiddle));
    EXPECT_FALSE(pTop->isChild(*pBottom));
    EXPECT_FALSE(pTop->isChild(*pTop));
}

TEST_F(ExpressionBaseImplLinksTest, ParentsAreFoundAtAnyDistance) {
    const auto pTop = node();
    const auto pMiddle = node();
    const auto pBottom = node();
    const auto pOther = node();
    add(*pTop, pMiddle);
    add(*pMiddle, pBottom);
    add(*pOther, pBottom);
    EXPECT_TRUE(pBottom->isParent(*pMiddle));
    EXPECT_TRUE(pBottom->isParent(*pTop));
    EXPECT_TRUE(pBottom->isParent(*pOther));
    EXPECT_FALSE(pBottom->isParent(*pBottom));
    EXPECT_FALSE(pMiddle->isParent(*pOther));
    EXPECT_FALSE(pTop->isParent(*pBottom));
}

TEST_F(ExpressionBaseImplLinksTest, ConstantKnowsNoParent) {
    const auto pParent = node();
    const Handle<OpenConstant> pConstant(new OpenConstant);
    pParent->addChild(Handle<ExpressionBaseImpl>(pConstant), true);
    ASSERT_EQ(parentsOf(*pConstant), Nodes{pParent.get()});
    EXPECT_FALSE(pConstant->isParent(*pParent));
}

TEST_F(ExpressionBaseImplLinksTest, VariableIsRecognisedInANodeAndItsTransitiveParents) {
    const Handle<VariableImpl> pTop(new VariableImpl);
    const auto pMiddle = node();
    const auto pBottom = node();
    add(*pMiddle, pBottom);
    Variable& top = *pTop;
    top.setValue(Handle<Expression>(pMiddle));
    const Handle<ExpressionBaseImpl> pVariable(pTop);
    EXPECT_TRUE(pTop->isDependantOf(pVariable));
    EXPECT_TRUE(pBottom->isDependantOf(pVariable));
    EXPECT_FALSE(pBottom->isDependantOf(Handle<ExpressionBaseImpl>(new VariableImpl)));
    EXPECT_FALSE(pBottom->isDependantOf(Handle<ExpressionBaseImpl>(pMiddle)));
    EXPECT_FALSE(pBottom->isDependantOf(Handle<ExpressionBaseImpl>()));
}

TEST_F(ExpressionBaseImplLinksTest, NothingDependsOnAConstantAndNoHookIsAsked) {
    const auto pNode = node();
    pNode->m_bIsDependant = true;
    EXPECT_FALSE(pNode->isDependantOf(Handle<ExpressionBaseImpl>(constant({1.0}))));
    EXPECT_EQ(takeCalls(), Calls());
    EXPECT_TRUE(pNode->isDependantOf(Handle<ExpressionBaseImpl>(node())));
}

TEST_F(ExpressionBaseImplLinksTest, RecognitionEndsAtTheFirstYes) {
    const auto pTop = node("top");
    const auto pMiddle = node("middle");
    const auto pBottom = node("bottom");
    add(*pTop, pMiddle);
    add(*pMiddle, pBottom);
    takeCalls();
    pMiddle->m_bIsDependant = true;
    EXPECT_TRUE(pBottom->isDependantOf(Handle<ExpressionBaseImpl>(node())));
    EXPECT_EQ(takeCalls(), (Calls{"bottom.isDependantOf_i", "middle.isDependantOf_i"}));
}

TEST_F(ExpressionBaseImplLinksTest, AddParentAppendsAndRefusesNull) {
    const auto pChild = node();
    const auto pFirst = node();
    const auto pSecond = node();
    pChild->addParent(pFirst);
    pChild->addParent(pSecond);
    pChild->addParent(pFirst);
    pChild->addParent(LimitedObjPtr<ExpressionBaseImpl>());
    EXPECT_EQ(takeAssertions(), Texts{"!in_pParent.isNull()"});
    EXPECT_EQ(parentsOf(*pChild), (Nodes{pFirst.get(), pSecond.get(), pFirst.get()}));
}

TEST_F(ExpressionBaseImplLinksTest, RemoveParentTakesOutTheFirstEntryAndKeepsTheOrder) {
    const auto pChild = node();
    const auto pFirst = node();
    const auto pSecond = node();
    const auto pThird = node();
    for (const auto& pParent : {pFirst, pSecond, pFirst, pThird}) {
        pChild->addParent(pParent);
    }
    EXPECT_TRUE(pChild->removeParent(pFirst));
    EXPECT_EQ(parentsOf(*pChild), (Nodes{pSecond.get(), pFirst.get(), pThird.get()}));
    EXPECT_TRUE(pChild->removeParent(pFirst));
    EXPECT_EQ(parentsOf(*pChild), (Nodes{pSecond.get(), pThird.get()}));
}

TEST_F(ExpressionBaseImplLinksTest, RemoveParentOfNullFails) {
    EXPECT_FALSE(node()->removeParent(LimitedObjPtr<ExpressionBaseImpl>()));
    EXPECT_EQ(takeAssertions(), Texts{"!in_pParent.isNull()"});
}

TEST_F(ExpressionBaseImplLinksTest, RemoveParentOfAStrangerLogsBothIdentifiers) {
    const auto pChild = node();
    const auto pParent = node();
    const auto pStranger = node();
    add(*pParent, pChild);
    EXPECT_FALSE(pChild->removeParent(pStranger));
    EXPECT_EQ(takeErrors(),
              Texts{logged(NodeLogger,
                           "Failed to remove parent (expr: " + std::to_string(pChild->getId()) +
                               ", pexpr: " + std::to_string(pStranger->getId()) + ")")});
    EXPECT_EQ(takeAssertions(), Texts{"false"});
    EXPECT_EQ(parentsOf(*pChild), Nodes{pParent.get()});
}

TEST_F(ExpressionBaseImplLinksTest, ReplaceChildMovesTheLinkAndTellsTheNode) {
    const auto pParent = node("parent");
    const auto pFirst = node("first");
    const auto pOld = node("old");
    const auto pNew = node("new");
    const auto pOther = node("other");
    add(*pParent, pFirst);
    add(*pParent, pOld);
    add(*pOther, pNew);
    evaluated(*pParent);
    evaluated(*pNew);
    takeCalls();
    EXPECT_EQ(pParent->replaceChild(*pOld, Handle<ExpressionBaseImpl>(pNew), true), 1u);
    EXPECT_EQ(childrenOf(*pParent), (Nodes{pFirst.get(), pNew.get()}));
    EXPECT_EQ(parentsOf(*pOld), Nodes());
    EXPECT_EQ(parentsOf(*pNew), (Nodes{pOther.get(), pParent.get()}));
    EXPECT_EQ(takeCalls().back(), "parent.replaceChild_i old new");
    EXPECT_TRUE(pParent->isValid());
    EXPECT_TRUE(pNew->isValid());
}

TEST_F(ExpressionBaseImplLinksTest, ReplaceChildMovesTheLastOfTwoEntries) {
    const auto pParent = node();
    const auto pOld = node();
    const auto pNew = node();
    add(*pParent, pOld);
    add(*pParent, pOld);
    add(*pParent, node());
    const auto pLast = pParent->getChildAt(2);
    EXPECT_EQ(pParent->replaceChild(*pOld, Handle<ExpressionBaseImpl>(pNew), true), 1u);
    EXPECT_EQ(childrenOf(*pParent), (Nodes{pOld.get(), pNew.get(), pLast.get()}));
    EXPECT_EQ(parentsOf(*pOld), Nodes{pParent.get()});
}

TEST_F(ExpressionBaseImplLinksTest, ReplaceChildOfAStrangerChangesNothing) {
    const auto pParent = node("parent");
    const auto pChild = node();
    const auto pStranger = node();
    const auto pNew = node();
    add(*pParent, pChild);
    takeCalls();
    EXPECT_EQ(pParent->replaceChild(*pStranger, Handle<ExpressionBaseImpl>(pNew), true),
              4294967295u);
    EXPECT_EQ(takeAssertions(), Texts{NotFound});
    EXPECT_EQ(childrenOf(*pParent), Nodes{pChild.get()});
    EXPECT_EQ(parentsOf(*pNew), Nodes());
    for (const std::string& strCall : takeCalls()) {
        EXPECT_EQ(strCall.find("replaceChild_i"), std::string::npos);
    }
}

TEST_F(ExpressionBaseImplLinksTest, ReplaceChildAlwaysChecks) {
    const auto pTop = node();
    const auto pParent = node();
    const auto pChild = node();
    const auto pNew = node();
    add(*pTop, pParent);
    add(*pParent, pChild);
    const struct {
        Handle<ExpressionBaseImpl> m_pNew;
        const char* m_szAssertion;
    } cases[] = {{pParent, NewSelf},
                 {pTop, NewLoop},
                 {pNew, NewDependant},
                 {Handle<ExpressionBaseImpl>(), "!in_pNewChild.isNull()"}};
    pTop->m_bIsDependant = true;
    for (const auto& testCase : cases) {
        for (const bool bCheck : {false, true}) {
            EXPECT_EQ(pParent->replaceChild(*pChild, testCase.m_pNew, bCheck), 4294967295u);
            EXPECT_EQ(takeAssertions(), Texts{testCase.m_szAssertion});
        }
    }
    // The checks come before the search.
    pParent->replaceChild(*pNew, pTop, true);
    EXPECT_EQ(takeAssertions(), Texts{NewLoop});
    EXPECT_EQ(childrenOf(*pParent), Nodes{pChild.get()});
    EXPECT_EQ(parentsOf(*pChild), Nodes{pParent.get()});
    EXPECT_EQ(parentsOf(*pNew), Nodes());
}

TEST_F(ExpressionBaseImplLinksTest, OldChildLivesUntilItsReplacementIsDone) {
    const auto pParent = node("parent");
    add(*pParent, node("old"));
    takeCalls();
    pParent->replaceChild(*pParent->getChildAt(0), Handle<ExpressionBaseImpl>(node("new")), true);
    EXPECT_EQ(takeCalls().back(), "parent.replaceChild_i old new");
}

TEST_F(ExpressionBaseImplLinksTest, NewChildMayBeGivenAsAHandleThatIsReplacedItself) {
    const auto pParent = node();
    add(*pParent, node());
    add(*pParent, node());
    const Handle<ExpressionBaseImpl>* pEntries = pParent->getChildBegin();
    const ExpressionBaseImpl* pSecond = pEntries[1].get();
    EXPECT_EQ(pParent->replaceChild(*pEntries[0], pEntries[1], true), 0u);
    EXPECT_EQ(childrenOf(*pParent), (Nodes{pSecond, pSecond}));
    EXPECT_EQ(parentsOf(*pSecond), (Nodes{pParent.get(), pParent.get()}));
}

TEST_F(ExpressionBaseImplLinksTest, ReplaceByItselfFails) {
    const auto pParent = node();
    const auto pNode = node();
    add(*pParent, pNode);
    EXPECT_FALSE(pNode->replace(Handle<ExpressionBaseImpl>(pNode)));
    EXPECT_EQ(takeAssertions(), Texts{"in_pNewExpression != this"});
    EXPECT_EQ(parentsOf(*pNode), Nodes{pParent.get()});
}

struct ReplaceCase {
    std::size_t m_uiParents;
    /// The parents whose link moves, in order.
    std::vector<std::size_t> m_vMoved;
    /// The parents that keep the node, in the order of its list of parents.
    std::vector<std::size_t> m_vKept;
    /// How many calls find nothing to replace.
    std::size_t m_uiFailures;
};

class ReplaceTest : public ExpressionBaseImplLinksTest,
                    public ::testing::WithParamInterface<ReplaceCase> {};

TEST_P(ReplaceTest, MovesTheParentsThatTheWalkMeets) {
    const auto pOld = node("old");
    const auto pNew = node("new");
    std::vector<Handle<RecordingNode>> vParents;
    for (std::size_t ui = 0; ui != GetParam().m_uiParents; ++ui) {
        vParents.push_back(node(("P" + std::to_string(ui)).c_str()));
        add(*vParents.back(), pOld);
    }
    takeCalls();
    EXPECT_TRUE(pOld->replace(Handle<ExpressionBaseImpl>(pNew)));

    Calls vMoves;
    Nodes vMoved;
    Nodes vKept;
    for (const std::size_t uiParent : GetParam().m_vMoved) {
        vMoves.push_back("P" + std::to_string(uiParent) + ".replaceChild_i old new");
        vMoved.push_back(vParents[uiParent].get());
    }
    for (const std::size_t uiParent : GetParam().m_vKept) {
        vKept.push_back(vParents[uiParent].get());
    }
    Calls vSeen;
    for (const std::string& strCall : takeCalls()) {
        if (strCall.find("replaceChild_i") != std::string::npos) {
            vSeen.push_back(strCall);
        }
    }
    EXPECT_EQ(vSeen, vMoves);
    EXPECT_EQ(parentsOf(*pNew), vMoved);
    EXPECT_EQ(parentsOf(*pOld), vKept);
    EXPECT_EQ(takeAssertions(), Texts(GetParam().m_uiFailures, NotFound));
}

INSTANTIATE_TEST_SUITE_P(
    ByNumberOfParents, ReplaceTest,
    ::testing::Values(ReplaceCase{0, {}, {}, 0}, ReplaceCase{1, {0}, {}, 0},
                      ReplaceCase{2, {0, 1}, {}, 0}, ReplaceCase{3, {0, 2}, {1}, 1},
                      ReplaceCase{4, {0, 2, 3}, {1}, 1}, ReplaceCase{5, {0, 2, 4}, {1, 3}, 2}),
    [](const auto& in_info) { return std::to_string(in_info.param.m_uiParents) + "Parents"; });

TEST_F(ExpressionBaseImplLinksTest, ReplaceGoesOnBehindARefusal) {
    const auto pOld = node("old");
    const auto pNew = node("new");
    const auto pFirst = node("first");
    const auto pSecond = node("second");
    add(*pFirst, pOld);
    add(*pSecond, pOld);
    add(*pNew, pFirst);
    EXPECT_TRUE(pOld->replace(Handle<ExpressionBaseImpl>(pNew)));
    EXPECT_EQ(takeAssertions(), Texts{NewLoop});
    EXPECT_EQ(parentsOf(*pOld), Nodes{pFirst.get()});
    EXPECT_EQ(childrenOf(*pSecond), Nodes{pNew.get()});
}

TEST_F(ExpressionBaseImplLinksTest, ReplaceMovesBothLinksOfOneParent) {
    const auto pOld = node();
    const auto pNew = node();
    const auto pParent = node();
    add(*pParent, pOld);
    add(*pParent, pOld);
    EXPECT_TRUE(pOld->replace(Handle<ExpressionBaseImpl>(pNew)));
    EXPECT_EQ(childrenOf(*pParent), (Nodes{pNew.get(), pNew.get()}));
    EXPECT_EQ(parentsOf(*pNew), (Nodes{pParent.get(), pParent.get()}));
}

TEST_F(ExpressionBaseImplLinksTest, NodeHeldByItsParentsAloneLivesUntilReplaceIsDone) {
    const auto pFirst = node();
    const auto pSecond = node();
    const auto pNew = node();
    RecordingNode* pOld = nullptr;
    {
        const auto pHeld = node();
        add(*pFirst, pHeld);
        add(*pSecond, pHeld);
        pOld = pHeld.get();
    }
    EXPECT_TRUE(pOld->replace(Handle<ExpressionBaseImpl>(pNew)));
    EXPECT_EQ(parentsOf(*pNew), (Nodes{pFirst.get(), pSecond.get()}));
}

TEST_F(ExpressionBaseImplLinksTest, FunctionHeldByItsParentAloneLivesUntilReplaceIsDone) {
    const auto pParent = node();
    const Handle<RecordingFunction> pNew(new RecordingFunction);
    pNew->addParameter("p");
    const Handle<ParameterImpl> pNewParameter(pNew->getParameter("p"));
    RecordingFunction user;
    user.addParameter("q");
    const Handle<Parameter> pUserParameter = user.getParameter("q");
    RecordingFunction* pOld = nullptr;
    {
        const Handle<RecordingFunction> pHeld(new RecordingFunction);
        pHeld->addParameter("p");
        pUserParameter->setValue(pHeld->getParameter("p"));
        pParent->addChild(Handle<ExpressionBaseImpl>(pHeld), true);
        pOld = pHeld.get();
    }
    EXPECT_TRUE(pOld->replace(Handle<ExpressionBaseImpl>(pNew)));
    EXPECT_EQ(childrenOf(*pParent), Nodes{pNew.get()});
    EXPECT_EQ(&Handle<ParameterImpl>(pUserParameter)->getLeafChild(), pNewParameter.get());
}

} // namespace

} // namespace Velmora::Math::Xpr
