// What the optimizer does to concatenations inside concatenations.

#include "math/xpr/OptimizerBench.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class OptimizerFlattenTest : public OptimizerBench {};

TEST_F(OptimizerFlattenTest, ConcatenationsInsideAConcatenationAreFlattenedInOrder) {
    const Node pA(constant({1.0, 2.0}));
    const Node pB(constant({3.0}));
    const Node pC(constant({4.0}));
    const Node pInner(concatenation({pA, pB}));
    const Handle<OperatorConcatenate> pOuter = concatenation({pInner, pC});
    const auto pX = variable("x", Node(pOuter));
    const std::size_t uiMade = countXaryFunctions();
    optimize({Node(pX)});
    EXPECT_EQ(countXaryFunctions(), uiMade + 1);
    const auto pFlat = concatenationOf(pX);
    ASSERT_FALSE(pFlat.isNull());
    EXPECT_NE(pFlat, pOuter);
    EXPECT_EQ(valuesBoundBy(*pFlat), nodesOf({pA, pB, pC}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 3.0, 4.0}));
    // The values have moved, not the variables; the operators are as they were.
    EXPECT_EQ(valuesBoundBy(*pOuter), nodesOf({pInner, pC}));
    EXPECT_EQ(parentsOf(*pOuter), Nodes());
    EXPECT_EQ(valuesBoundBy(dynamic_cast<const FunctionBaseImpl&>(*pInner)), nodesOf({pA, pB}));
    EXPECT_NE(argument(*pFlat, 2), argument(*pOuter, 1));
}

TEST_F(OptimizerFlattenTest, FlattenedArgumentsAreNamedApartAndTheOthersKeepTheirNames) {
    // All of them are called a0, a1 and so on where they come from.
    const Node pA(constant({1.0}));
    const Node pInner(concatenation({pA, pA}));
    const auto pX = variable("x", Node(concatenation({pInner, pA, pInner})));
    optimize({Node(pX)});
    const auto pFlat = concatenationOf(pX);
    Texts vNames;
    for (auto ite = pFlat->getArgumentBegin(); ite != pFlat->getArgumentEnd(); ++ite) {
        vNames.push_back(ite->first);
    }
    ASSERT_EQ(vNames.size(), 5u);
    EXPECT_EQ(vNames[2], "a1");
    for (const std::size_t ui : {0U, 1U, 3U, 4U}) {
        EXPECT_EQ(vNames[ui].size(), 36u) << "the text of a UUID";
    }
    EXPECT_STREQ(pFlat->getName(), "unamed");
}

TEST_F(OptimizerFlattenTest, ThreeLevelsOfNestingAreFlattenedInTwoRounds) {
    const Node pA(constant({1.0}));
    const Node pB(constant({2.0}));
    const Node pC(constant({3.0}));
    const Node pD(constant({4.0}));
    const auto pX = variable(
        "x",
        Node(concatenation(
            {pA, Node(concatenation({Node(concatenation({pB, pC}, "unamed")), pD}, "unamed"))})));
    const std::size_t uiMade = countXaryFunctions();
    optimize({Node(pX)});
    EXPECT_EQ(countXaryFunctions(), uiMade + 2) << "one new operator a round";
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pB, pC, pD}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 3.0, 4.0}));
}

TEST_F(OptimizerFlattenTest, ConcatenationInTheBodyOfAScriptFunctionIsFlattenedToo) {
    const Node pA(constant({1.0}));
    const Node pB(constant({2.0}));
    const Handle<ScriptFunctionImpl> pFunction =
        scriptFunction("s.f", Node(concatenation({pA, pB}, "unamed")));
    const auto pX = variable("x", Node(concatenation({Node(pFunction), pB})));
    optimize({Node(pX)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pB, pB}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 2.0}));
}

TEST_F(OptimizerFlattenTest, ScriptFunctionOfAnotherBodyIsKeptAsOneValue) {
    const Node pA(constant({1.0}));
    const Node pSum(scriptFunction("s.f", Node(binary(pA, pA))));
    const Node pInner(concatenation({pA}));
    const auto pX = variable("x", Node(concatenation({pSum, pInner})));
    optimize({Node(pX)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pSum, pA}));
    EXPECT_EQ(evaluated(*pX), (Values{2.0, 1.0}));
}

TEST_F(OptimizerFlattenTest, FlatteningLooksThroughOneScriptFunctionAndNoVariable) {
    const Node pA(constant({1.0}));
    const Node pInner(concatenation({pA, pA}));
    const Node pDeep(scriptFunction("s.f", Node(scriptFunction("s.g", pInner))));
    const Node pNamed(variable("named", pInner));
    const Handle<OperatorConcatenate> pOuter = concatenation({pDeep, pNamed});
    const auto pX = variable("x", Node(pOuter));
    optimize({Node(pX)});
    EXPECT_EQ(concatenationOf(pX), pOuter);
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 1.0, 1.0, 1.0}));
}

TEST_F(OptimizerFlattenTest, ConcatenationOfAnotherNameKeepsItsNesting) {
    const Node pA(constant({1.0}));
    const Node pInner(concatenation({pA}));
    const Handle<OperatorConcatenate> pOuter = concatenation({pInner, pA}, "unamed");
    const auto pX = variable("x", Node(pOuter));
    optimize({Node(pX)});
    EXPECT_EQ(concatenationOf(pX), pOuter);
    EXPECT_EQ(valuesBoundBy(*pOuter), nodesOf({pInner, pA}));
    const std::size_t uiMade = countXaryFunctions();
    pOuter->setName("concat");
    optimize({Node(pX)});
    EXPECT_EQ(countXaryFunctions(), uiMade + 1);
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pA}));
}

TEST_F(OptimizerFlattenTest, ConcatenationsOfScriptsKeepTheirNesting) {
    const Optimized script("inputvar a\ninputvar b\ninputvar c\nx = {{a, b}, c}\n");
    const auto& outer = dynamic_cast<const OperatorConcatenate&>(*script.computing("s.x"));
    ASSERT_EQ(outer.getArgumentCount(), 2u);
    const auto* const pInner = dynamic_cast<const OperatorConcatenate*>(valueOf(outer, 0));
    ASSERT_NE(pInner, nullptr);
    EXPECT_EQ(pInner->getArgumentCount(), 2u);
    EXPECT_STREQ(outer.getName(), "unamed");
}

TEST_F(OptimizerFlattenTest, ConcatenationThatOthersUseStaysAlive) {
    const Node pA(constant({1.0}));
    const Node pB(constant({2.0}));
    const auto pUser = variable("user", Node(concatenation({pA, pB})));
    const auto pX = variable("x", Node(concatenation({pUser->getValue(), pA})));
    optimize({Node(pX), Node(pUser)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pUser)), nodesOf({pA, pB}));
    EXPECT_EQ(evaluated(*pUser), (Values{1.0, 2.0}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 1.0}));
}

TEST_F(OptimizerFlattenTest, FlattenedConcatenationReplacesTheNestedOneForAllItsParents) {
    const Node pA(constant({1.0}));
    const Node pOuter(concatenation({Node(concatenation({pA})), pA}));
    const auto pX = variable("x", pOuter);
    const auto pY = variable("y", pOuter);
    optimize({Node(pX), Node(pY)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pA}));
    EXPECT_EQ(pX->getValue(), pY->getValue());
}

TEST_F(OptimizerFlattenTest, ConcatenationOfThreeUsersIsFlattenedForEachVisit) {
    const Node pA(constant({1.0}));
    const Node pOuter(concatenation({Node(concatenation({pA})), pA}));
    const auto pX = variable("x", pOuter);
    const auto pY = variable("y", pOuter);
    const auto pZ = variable("z", pOuter);
    const std::size_t uiBefore = countXaryFunctions();
    optimize({Node(pX), Node(pY), Node(pZ)});
    EXPECT_EQ(countXaryFunctions() - uiBefore, 3U);
    // One call moves two of three users, and comes to one of them again.
    EXPECT_EQ(takeAssertions(), Texts{"iteFound != m_Childs.end()"});
    for (const auto& pUser : {pX, pY, pZ}) {
        EXPECT_EQ(valuesBoundBy(*concatenationOf(pUser)), nodesOf({pA, pA}));
    }
    EXPECT_EQ(parentsOf(*pOuter), Nodes());
}

TEST_F(OptimizerFlattenTest, BeyondTheLimitOfVisitsItReplacesTheNestedOneForAllItsParentsToo) {
    VisitLimit limit;
    const Node pA(constant({1.0}));
    const Node pOuter(concatenation({Node(concatenation({pA})), pA}));
    std::vector<Handle<VariableImpl>> vUsers;
    for (const char* szName : {"a", "b", "c", "d", "e"}) {
        vUsers.push_back(variable(szName, pOuter));
        add(limit.m_Dictionnary, vUsers.back());
    }
    optimize(limit.m_Dictionnary);
    for (const auto& pUser : vUsers) {
        EXPECT_EQ(valuesBoundBy(*concatenationOf(pUser)), nodesOf({pA, pA}));
        EXPECT_EQ(pUser->getValue(), vUsers.front()->getValue());
    }
    EXPECT_EQ(parentsOf(*pOuter), Nodes());
}

TEST_F(OptimizerFlattenTest, ConcatenationThatIsAnEntryItselfStaysTheEntry) {
    Dictionnary dictionnary("in");
    const Node pA(constant({1.0}));
    const Handle<OperatorConcatenate> pOuter = concatenation({Node(concatenation({pA})), pA});
    add(dictionnary, pOuter);
    Dictionnary out("out");
    EXPECT_TRUE(Optimizer().run(dictionnary, out));
    EXPECT_EQ(out.findExpression("concat"), Handle<Expression>(pOuter));
    EXPECT_EQ(evaluated(*pOuter), (Values{1.0, 1.0}));
}

TEST_F(OptimizerFlattenTest, FlatteningLeavesAnArgumentWithoutAValueWithoutOne) {
    const Node pA(constant({1.0}));
    const Handle<OperatorConcatenate> pOuter = concatenation({Node(concatenation({pA}))});
    pOuter->addArgument("open");
    const auto pX = variable("x", Node(pOuter));
    optimize({Node(pX)});
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Can't set a null expression")});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), (Nodes{pA.get(), nullptr}));
}

} // namespace

} // namespace Velmora::Math::Xpr
