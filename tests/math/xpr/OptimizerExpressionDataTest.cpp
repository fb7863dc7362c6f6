// What the optimizer knows of one expression: key, hash, complexity, validity, and the way to the
// data around it.

#include "math/xpr/src/OptimizerExpressionDataImpl.h"

#include <velmora/math/xpr/OperatorMultiply.h>

#include <functional>
#include <limits>
#include <map>

#include "math/xpr/OptimizerGraphs.h"
#include "math/xpr/src/ExpressionComplexity.h"
#include "support/GraphTest.h"
#include "support/PunctuatedLocale.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

using DataImpl = OptimizerExpressionDataImpl;

/// Holds what was put into it, and makes data.
class Container : public OptimizerExpressionDataContainerImpl<DataImpl> {
public:
    CountedObjPtr<OptimizerExpressionData>& get(const Expression& in_Expression) override {
        return m_mapData[dynamic_cast<const ExpressionBaseImpl&>(in_Expression).getId()];
    }

    std::map<unsigned long, CountedObjPtr<OptimizerExpressionData>> m_mapData;
};

class OptimizerExpressionDataTest : public GraphTest {
protected:
    void TearDown() override {
        m_Container.m_mapData.clear();
        GraphTest::TearDown();
    }

    /// Makes data for a node and for all below it that has none.
    void add(const Node& in_pNode) {
        CountedObjPtr<OptimizerExpressionData>& pData = m_Container.get(*in_pNode);
        if (pData.isNull()) {
            pData = m_Container.newData(m_Container, in_pNode);
            for (const auto* p = in_pNode->getChildBegin(); p != in_pNode->getChildEnd(); ++p) {
                add(*p);
            }
        }
    }

    DataImpl& data(const Node& in_pNode) {
        add(in_pNode);
        return dynamic_cast<DataImpl&>(*m_Container.get(*in_pNode));
    }

    std::string key(const Node& in_pNode) { return data(in_pNode).key(); }

    static std::string idOf(const ExpressionBaseImpl& in_Node) {
        return "#" + std::to_string(in_Node.getId());
    }

    template <class T>
    static std::string idOf(const Handle<T>& in_pNode) {
        return idOf(*in_pNode);
    }

    bool areEqual(const Node& in_pOne, const Node& in_pOther) {
        const OptimizerExpressionData& one = data(in_pOne);
        const OptimizerExpressionData& other = data(in_pOther);
        const bool bEqual = one == other;
        // The whole relation tells the same.
        EXPECT_EQ(other == one, bEqual);
        EXPECT_EQ(one != other, !bEqual);
        EXPECT_EQ(one.key() == other.key(), bEqual);
        EXPECT_EQ(one.getKeyNumber() == other.getKeyNumber(), bEqual);
        return bEqual;
    }

    Container m_Container;
    DoubleVector m_vFrame{1.0, 2.0};
};

Node domainValue(const DoubleVector& in_vValue) {
    return Node(new DomainValueNoCopyImpl(in_vValue));
}

TEST_F(OptimizerExpressionDataTest, ConstantAndDomainValueHaveTheirIdentifierAsKey) {
    const auto pConstant = constant({3.0});
    const Node pDomainValue = domainValue(m_vFrame);
    EXPECT_EQ(key(Node(pConstant)), idOf(pConstant));
    EXPECT_EQ(key(pDomainValue), idOf(pDomainValue));
}

TEST_F(OptimizerExpressionDataTest, TwoConstantsOfOneValueHaveDifferentKeys) {
    EXPECT_FALSE(areEqual(Node(constant({3.0})), Node(constant({3.0}))));
}

TEST_F(OptimizerExpressionDataTest, OneConstantUsedTwiceHasOneKey) {
    const auto pConstant = constant({3.0});
    EXPECT_TRUE(
        areEqual(Node(variable("a", Node(pConstant))), Node(variable("b", Node(pConstant)))));
    EXPECT_TRUE(areEqual(Node(call("f", {Node(pConstant)})), Node(call("f", {Node(pConstant)}))));
}

TEST_F(OptimizerExpressionDataTest, TwoDomainValuesOfOneVectorHaveDifferentKeys) {
    EXPECT_FALSE(areEqual(domainValue(m_vFrame), domainValue(m_vFrame)));
}

TEST_F(OptimizerExpressionDataTest, VariableWithoutAValueHasItsNameAsKey) {
    const auto pVariable = variable("frame");
    EXPECT_EQ(key(Node(pVariable)), "#frame");
    EXPECT_TRUE(areEqual(Node(pVariable), Node(variable("frame"))));
    EXPECT_FALSE(areEqual(Node(pVariable), Node(variable("other"))));
}

TEST_F(OptimizerExpressionDataTest, VariableWithAValueIsTransparent) {
    const auto pConstant = constant({3.0});
    const auto pOne = variable("one", Node(pConstant));
    const auto pTwo = variable("two", Node(pOne));
    EXPECT_EQ(key(Node(pOne)), idOf(pConstant));
    EXPECT_EQ(key(Node(pTwo)), idOf(pConstant));
    EXPECT_TRUE(areEqual(Node(pTwo), Node(pConstant)));
}

TEST_F(OptimizerExpressionDataTest, KeyOfAFunctionHasTheNameAndTheKeysOfItsChildren) {
    const auto pConstant = constant({3.0});
    const auto pProduct =
        binary<OperatorMultiply>(Node(variable("left", Node(pConstant))), Node(variable("frame")));
    EXPECT_EQ(key(Node(pProduct)), "#mult" + idOf(pConstant) + "#frame");
    EXPECT_EQ(key(Node(call("f"))), "#f");
    EXPECT_EQ(key(Node(call("f", {Node(pProduct), Node(pConstant)}))),
              "#f#mult" + idOf(pConstant) + "#frame" + idOf(pConstant));
}

TEST_F(OptimizerExpressionDataTest, KeyOfAScriptFunctionHasItsBody) {
    const auto pFunction = scriptFunction("s.f", Node(constant({3.0})));
    EXPECT_EQ(key(Node(pFunction)), "#s.f" + idOf(*childrenOf(*pFunction).back()));
}

TEST_F(OptimizerExpressionDataTest, ParametersStandBetweenTheNameAndTheChildren) {
    const auto pFunction = call("f", {Node(variable("frame"))});
    newParameter(*pFunction, "n")->setValue(ParameterValue(3));
    newParameter(*pFunction, "rate")->setValue(ParameterValue(0.5F));
    newParameter(*pFunction, "mode")->setValue(ParameterValue("a b"));
    const auto pOpen = newParameter(*pFunction, "open");
    EXPECT_EQ(key(Node(pFunction)), "#f&n%3&rate%0.5&mode%a b&open%paramId: " +
                                        std::to_string(pOpen->getId()) + "#frame");
}

TEST_F(OptimizerExpressionDataTest, NumbersInKeysAreTheSameUnderEveryLocaleOfTheHost) {
    const auto pFunction = call("f", {Node(variable("frame"))});
    newParameter(*pFunction, "rate")->setValue(ParameterValue(8000));
    newParameter(*pFunction, "level")->setValue(ParameterValue(0.5F));
    const GlobalPunctuation punctuation;
    EXPECT_EQ(key(Node(pFunction)), "#f&rate%8000&level%0.5#frame");
}

TEST_F(OptimizerExpressionDataTest, NumbersInKeysHaveSixDigits) {
    const auto newCall = [](const ParameterValue& in_Value) {
        const auto pFunction = call("f");
        newParameter(*pFunction, "p")->setValue(in_Value);
        return Node(pFunction);
    };
    EXPECT_EQ(key(newCall(ParameterValue(1234567.5F))), "#f&p%1.23457e+06");
    EXPECT_TRUE(areEqual(newCall(ParameterValue(1000000.5F)), newCall(ParameterValue(1000001.0F))));
    EXPECT_FALSE(areEqual(newCall(ParameterValue(1.00001F)), newCall(ParameterValue(1.00002F))));
    EXPECT_FALSE(areEqual(newCall(ParameterValue(1000000)), newCall(ParameterValue(1000001))));
}

TEST_F(OptimizerExpressionDataTest, EmptyTextIsADirectValueToo) {
    const auto pFunction = call("f");
    newParameter(*pFunction, "p")->setValue(ParameterValue(""));
    EXPECT_EQ(key(Node(pFunction)), "#f&p%");
}

TEST_F(OptimizerExpressionDataTest, LinkedParameterWithoutAValueShowsTheIdentifierOfItsLeaf) {
    const auto pHost = call("host");
    const auto pLeaf = newParameter(*pHost, "leaf");
    const auto pOther = newParameter(*pHost, "other");
    const auto pBetween = newParameter(*pHost, "between");
    pBetween->setValue(Handle<Parameter>(pLeaf));
    const auto newCall = [](const Handle<ParameterImpl>& in_pTarget) {
        const auto pFunction = call("f");
        newParameter(*pFunction, "p")->setValue(Handle<Parameter>(in_pTarget));
        return Node(pFunction);
    };
    EXPECT_EQ(key(newCall(pLeaf)), "#f&p%paramId: " + std::to_string(pLeaf->getId()));
    EXPECT_TRUE(areEqual(newCall(pLeaf), newCall(pLeaf)));
    EXPECT_TRUE(areEqual(newCall(pLeaf), newCall(pBetween)));
    EXPECT_FALSE(areEqual(newCall(pLeaf), newCall(pOther)));
}

TEST_F(OptimizerExpressionDataTest, LinkedParameterShowsTheDirectValueOfItsLeaf) {
    const auto pHost = call("host");
    const auto pLeaf = newParameter(*pHost, "leaf");
    pLeaf->setValue(ParameterValue(3));
    const auto pLinked = call("f");
    newParameter(*pLinked, "p")->setValue(Handle<Parameter>(pLeaf));
    const auto pDirect = call("f");
    newParameter(*pDirect, "p")->setValue(ParameterValue(3));
    EXPECT_EQ(key(Node(pLinked)), "#f&p%3");
    EXPECT_TRUE(areEqual(Node(pLinked), Node(pDirect)));
    const auto pLinkedLater = call("f");
    const auto pParameter = newParameter(*pLinkedLater, "p");
    pParameter->setValue(ParameterValue(4));
    pParameter->setValue(Handle<Parameter>(pLeaf));
    EXPECT_EQ(key(Node(pLinkedLater)), "#f&p%3");
}

TEST_F(OptimizerExpressionDataTest, FunctionsAreEqualWithTheSameNameParametersAndChildren) {
    const Node pA(variable("a"));
    const Node pB(variable("b"));
    const auto newCall = [](const char* in_szName, const char* in_szParameter, int in_iValue,
                            NodeList in_values) {
        const auto pFunction = call(in_szName, in_values);
        newParameter(*pFunction, in_szParameter)->setValue(ParameterValue(in_iValue));
        return Node(pFunction);
    };
    const Node pFunction = newCall("f", "p", 1, {pA, pB});
    EXPECT_TRUE(areEqual(pFunction, newCall("f", "p", 1, {pA, pB})));
    EXPECT_FALSE(areEqual(pFunction, newCall("g", "p", 1, {pA, pB})));
    EXPECT_FALSE(areEqual(pFunction, newCall("f", "q", 1, {pA, pB})));
    EXPECT_FALSE(areEqual(pFunction, newCall("f", "p", 2, {pA, pB})));
    EXPECT_FALSE(areEqual(pFunction, newCall("f", "p", 1, {pB, pA})));
    EXPECT_FALSE(areEqual(pFunction, newCall("f", "p", 1, {pA})));
    EXPECT_FALSE(areEqual(pFunction, newCall("f", "p", 1, {pA, pB, pB})));
}

TEST_F(OptimizerExpressionDataTest, ParametersOfOneTextAreEqualWhateverTheirKind) {
    const auto newCall = [](const ParameterValue& in_Value) {
        const auto pFunction = call("f");
        newParameter(*pFunction, "p")->setValue(in_Value);
        return Node(pFunction);
    };
    EXPECT_TRUE(areEqual(newCall(ParameterValue(3)), newCall(ParameterValue("3"))));
    EXPECT_TRUE(areEqual(newCall(ParameterValue(3)), newCall(ParameterValue(3.0F))));
}

TEST_F(OptimizerExpressionDataTest, SumsOfSwappedSidesAreDifferent) {
    const Node pA(variable("a"));
    const Node pB(variable("b"));
    EXPECT_FALSE(areEqual(Node(binary(pA, pB)), Node(binary(pB, pA))));
    EXPECT_TRUE(areEqual(Node(binary(pA, pB)), Node(binary(pA, pB))));
}

TEST_F(OptimizerExpressionDataTest, InstancesThatReachOneNodeThroughDifferentVariablesAreEqual) {
    const auto pConstant = constant({3.0});
    const Node pChain(variable("far", Node(variable("near", Node(pConstant)))));
    EXPECT_TRUE(areEqual(Node(call("f", {Node(pConstant)})), Node(call("f", {pChain}))));
}

TEST_F(OptimizerExpressionDataTest, ConcatenationsOfOneFlatTextAreEqualHoweverTheyNest) {
    const Node pA(variable("a"));
    const Node pB(variable("b"));
    const auto list = [](NodeList in_values) { return Node(concatenation(in_values, "unamed")); };
    EXPECT_EQ(key(list({list({pA}), pB})), "#unamed#unamed#a#b");
    EXPECT_TRUE(areEqual(list({list({pA}), pB}), list({list({pA, pB})})));
    EXPECT_FALSE(areEqual(list({list({pA}), pB}), list({pA, pB})));
    EXPECT_FALSE(areEqual(list({list({pA}), pB}), list({pA, list({pB})})));
}

TEST_F(OptimizerExpressionDataTest, KeyAskedForTwiceIsNotRebuilt) {
    const auto pConstant = constant({3.0});
    const auto pOther = constant({4.0});
    const auto pVariable = variable("x", Node(pConstant));
    const auto pFunction = call("f", {Node(pVariable)});
    add(Node(pOther));
    LogCapture log(KeyLogger);
    const std::string& strKey = data(Node(pFunction)).key();
    EXPECT_EQ(strKey, "#f" + idOf(pConstant));
    EXPECT_EQ(log.messages(log4cplus::DEBUG_LOG_LEVEL), Texts{"#f" + idOf(pConstant)});
    log.clear();
    pConstant->replace(Node(pOther));
    EXPECT_EQ(&data(Node(pFunction)).key(), &strKey);
    EXPECT_EQ(strKey, "#f" + idOf(pConstant));
    EXPECT_EQ(log.lines().size(), 0u);
}

TEST_F(OptimizerExpressionDataTest,
       WhatIsFirstAskedForItsKeyBehindAReplacementHasTheKeyBelowAsItWas) {
    const auto pConstant = constant({3.0});
    const auto pVariable = variable("x", Node(pConstant));
    const auto pOther = constant({4.0});
    add(Node(pOther));
    key(Node(pVariable));
    pConstant->replace(Node(pOther));
    EXPECT_EQ(key(Node(variable("y", Node(pVariable)))), idOf(pConstant));
}

TEST_F(OptimizerExpressionDataTest, SecondDataOfAnExpressionHasTheSameKey) {
    const auto pFunction = call("f", {Node(variable("a"))});
    const DataImpl& first = data(Node(pFunction));
    const DataImpl second(m_Container, Node(pFunction));
    const OptimizerExpressionData& interface = second;
    EXPECT_EQ(second.key(), "#f#a");
    EXPECT_TRUE(interface == first);
    EXPECT_NE(&second.key(), &first.key());
}

TEST_F(OptimizerExpressionDataTest, HashIsThatOfTheKeysText) {
    EXPECT_EQ(data(Node(variable("1"))).hash(), 224u);
    const auto pFunction = call("f\xc3\xa4", {Node(variable("a")), Node(constant({1.0}))});
    newParameter(*pFunction, "p")->setValue(ParameterValue("text"));
    const std::string strKey = key(Node(pFunction));
    EXPECT_EQ(data(Node(pFunction)).hash(), plainHash(strKey));
}

TEST_F(OptimizerExpressionDataTest, HashStaysWhenTheGraphChanges) {
    const auto pConstant = constant({3.0});
    const auto pFunction = call("f", {Node(pConstant)});
    const std::size_t uiHash = data(Node(pFunction)).hash();
    const auto pOther = constant({4.0});
    add(Node(pOther));
    pConstant->replace(Node(pOther));
    EXPECT_EQ(data(Node(pFunction)).hash(), uiHash);
    EXPECT_EQ(uiHash, plainHash("#f" + idOf(pConstant)));
}

TEST_F(OptimizerExpressionDataTest, EqualHashesDoNotMakeEqualKeys) {
    const Node pOne(variable("af"));
    const Node pOther(variable("ba"));
    EXPECT_EQ(data(pOne).hash(), data(pOther).hash());
    EXPECT_FALSE(areEqual(pOne, pOther));
}

TEST_F(OptimizerExpressionDataTest, ComplexityCountsTheNodesOfTheTree) {
    const Node pFrame(variable("frame"));
    EXPECT_EQ(data(Node(constant({1.0}))).getComplexity(), 1u);
    EXPECT_EQ(data(domainValue(m_vFrame)).getComplexity(), 1u);
    EXPECT_EQ(data(pFrame).getComplexity(), 1u);
    EXPECT_EQ(data(Node(variable("v", Node(constant({1.0}))))).getComplexity(), 2u);
    EXPECT_EQ(data(Node(call("f"))).getComplexity(), 1u);
    // The function, an argument and the variable, and once more the last two.
    EXPECT_EQ(data(Node(call("f", {pFrame}))).getComplexity(), 3u);
    EXPECT_EQ(data(Node(call("f", {pFrame, pFrame}))).getComplexity(), 5u);
}

TEST_F(OptimizerExpressionDataTest, ComplexityCountsASharedNodeOncePerPath) {
    const auto pTop = doubled(variable("x0"), 3);
    // A level is a variable, a sum and two arguments above twice what lies below.
    EXPECT_EQ(data(Node(pTop)).getComplexity(), 4u + 2 * (4 + 2 * (4 + 2 * 1)));
}

TEST_F(OptimizerExpressionDataTest, ComplexityIsNotKept) {
    const auto pVariable = variable("v", Node(constant({1.0})));
    DataImpl& variableData = data(Node(pVariable));
    EXPECT_EQ(variableData.getComplexity(), 2u);
    Variable& interface = *pVariable;
    interface.setValue(Handle<Expression>(variable("w", Node(constant({1.0})))));
    EXPECT_EQ(variableData.getComplexity(), 3u);
}

TEST_F(OptimizerExpressionDataTest, ComplexityOfTooManyPathsStaysAtTheLargestNumber) {
    EXPECT_EQ(data(Node(doubled(variable("x0"), 40))).getComplexity(), 5 * (1UL << 40) - 4);
    EXPECT_EQ(data(Node(doubled(variable("x0"), 70))).getComplexity(),
              std::numeric_limits<unsigned long>::max());
}

TEST_F(OptimizerExpressionDataTest, CountsOfComplexityHoldUntilTheyAreForgottenFromBelow) {
    const auto newVariable = [] { return variable("v", Node(constant({1.0}))); };
    const auto lengthen = [](const Handle<VariableImpl>& in_pVariable) {
        Variable& interface = *in_pVariable;
        interface.setValue(Handle<Expression>(variable("w", in_pVariable->getValue())));
    };
    const auto pChanged = newVariable();
    const auto pKept = newVariable();
    const auto pAbove = variable("x", Node(call("f", {Node(pChanged), Node(pKept)})));
    ExpressionComplexity complexity;
    EXPECT_EQ(complexity.of(*pAbove), 8u);
    lengthen(pChanged);
    lengthen(pKept);
    EXPECT_EQ(complexity.of(*pAbove), 8u);
    complexity.forgetAbove(*pChanged->getValue());
    EXPECT_EQ(complexity.of(*pAbove), 9u);
    EXPECT_EQ(complexity.of(*pChanged), 3u);
    EXPECT_EQ(complexity.of(*pKept), 2u);
}

TEST_F(OptimizerExpressionDataTest, NewDataIsValidUntilItIsInvalidated) {
    DataImpl& leaf = data(Node(constant({1.0})));
    EXPECT_TRUE(leaf.isValid());
    leaf.invalidate();
    EXPECT_FALSE(leaf.isValid());
    leaf.invalidate();
    EXPECT_FALSE(leaf.isValid());
}

TEST_F(OptimizerExpressionDataTest, InvalidatingANodeWithAValidParentChangesNothing) {
    const auto pConstant = constant({1.0});
    const auto pParent = variable("p", Node(pConstant));
    add(Node(pParent));
    data(Node(pConstant)).invalidate();
    EXPECT_TRUE(data(Node(pConstant)).isValid());
    EXPECT_TRUE(data(Node(pParent)).isValid());
}

TEST_F(OptimizerExpressionDataTest, ChildFallsWithItsLastValidParent) {
    const auto pConstant = constant({1.0});
    const auto pFirst = variable("first", Node(pConstant));
    const auto pSecond = variable("second", Node(pConstant));
    add(Node(pFirst));
    add(Node(pSecond));
    data(Node(pFirst)).invalidate();
    EXPECT_FALSE(data(Node(pFirst)).isValid());
    EXPECT_TRUE(data(Node(pConstant)).isValid());
    EXPECT_TRUE(data(Node(pSecond)).isValid());
    data(Node(pSecond)).invalidate();
    EXPECT_FALSE(data(Node(pConstant)).isValid());
}

TEST_F(OptimizerExpressionDataTest, InvalidationGoesDownToWhatIsHeldByTheNodeAlone) {
    const Node pShared(variable("shared"));
    const Node pOwn(variable("own"));
    const auto pTop = call("top", {pShared, Node(variable("between", pOwn))});
    const auto pOther = call("other", {pShared});
    add(Node(pTop));
    add(Node(pOther));
    data(Node(pTop)).invalidate();
    EXPECT_FALSE(data(pOwn).isValid());
    EXPECT_TRUE(data(pShared).isValid());
    EXPECT_TRUE(data(Node(pOther)).isValid());
    EXPECT_FALSE(data(Node(argument(*pTop, 0))).isValid());
}

// Otherwise each use of a node by the one above would go down from it again.
TEST_F(OptimizerExpressionDataTest, InvalidationGoesDownFromEachNodeOnce) {
    std::vector<Handle<RecordingFunction>> vFunctions{call("f")};
    data(Node(vFunctions.back()));
    for (int i = 0; i != 60; ++i) {
        const Node pBelow(vFunctions.back());
        vFunctions.push_back(call("f"));
        vFunctions.back()->addChild(pBelow, true);
        vFunctions.back()->addChild(pBelow, true);
        data(Node(vFunctions.back()));
    }
    data(Node(vFunctions.back())).invalidate();
    EXPECT_FALSE(data(Node(vFunctions.front())).isValid());
}

TEST_F(OptimizerExpressionDataTest, DataHoldsItsExpression) {
    Node pVariable(variable("v"));
    const ExpressionBaseImpl* const pNode = pVariable.get();
    const DataImpl variableData(m_Container, pVariable);
    EXPECT_EQ(variableData.getExpression(), pVariable);
    pVariable = nullptr;
    EXPECT_EQ(variableData.getExpression().get(), pNode);
    EXPECT_STREQ(variableData.getExpression()->getName(), "v");
}

TEST_F(OptimizerExpressionDataTest, WritingWritesTheExpression) {
    const Node pVariable(variable("v"));
    std::ostringstream stream;
    const OutputStreamable& variableData = data(pVariable);
    EXPECT_EQ(&variableData.write(stream), &stream);
    EXPECT_EQ(stream.str(), textOf(*pVariable));
    EXPECT_NE(stream.str(), "");
}

TEST_F(OptimizerExpressionDataTest, DataOfNothingFailsAnAssertionAndWritesNull) {
    const DataImpl none(m_Container, Node());
    EXPECT_EQ(takeAssertions(), Texts{"false && \"Unknown expression type\""});
    EXPECT_EQ(textOf(none), "null");
    EXPECT_TRUE(none.getExpression().isNull());
}

TEST_F(OptimizerExpressionDataTest, UnknownKindOfExpressionFailsAnAssertion) {
    const Node pUnknown(new RecordingNode);
    const DataImpl unknown(m_Container, pUnknown);
    EXPECT_EQ(takeAssertions(), Texts{"false && \"Unknown expression type\""});
    EXPECT_EQ(unknown.getExpression(), pUnknown);
    EXPECT_TRUE(unknown.isValid());
    EXPECT_EQ(unknown.getComplexity(), 0u);
}

TEST_F(OptimizerExpressionDataTest, UnknownKindOfExpressionIsEqualToItselfOnly) {
    const Node pUnknown(new RecordingNode);
    EXPECT_EQ(key(pUnknown), idOf(pUnknown));
    EXPECT_FALSE(areEqual(pUnknown, Node(new RecordingNode)));
    EXPECT_EQ(takeAssertions().size(), 2u);
}

TEST_F(OptimizerExpressionDataTest, SpecializerOfAnotherKindFailsAnAssertion) {
    const Node pLeaf(constant({1.0}));
    DataImpl& leaf = data(pLeaf);
    const auto uiKey = leaf.getKeyNumber();
    OptimizerExpressionDataSpecializerImpl<FunctionBaseImpl> functionKind(leaf);
    EXPECT_EQ(functionKind.makeKeyNumber(), uiKey);
    EXPECT_EQ(takeAssertions(), Texts{"!pFunc.isNull()"});
    OptimizerExpressionDataSpecializerImpl<VariableImpl> variableKind(leaf);
    EXPECT_EQ(variableKind.makeKeyNumber(), uiKey);
    EXPECT_EQ(takeAssertions(), Texts{"!pVar.isNull()"});
}

TEST_F(OptimizerExpressionDataTest, IteratorsWalkToTheDataOfChildrenAndParents) {
    const Node pLeaf(variable("leaf"));
    const auto pTop = call("top", {pLeaf, pLeaf});
    const DataImpl& top = data(Node(pTop));
    const DataImpl& leaf = data(pLeaf);
    std::vector<const OptimizerExpressionData*> vChildren, vParents, vExpected;
    for (auto ite = top.getChildBegin(); ite != top.getChildEnd(); ++ite) {
        vChildren.push_back((*ite).get());
    }
    for (auto ite = leaf.getParentBegin(); ite != leaf.getParentEnd(); ++ite) {
        vParents.push_back((*ite).get());
    }
    for (const std::size_t ui : {0U, 1U}) {
        vExpected.push_back(&data(Node(argument(*pTop, ui))));
    }
    EXPECT_EQ(vChildren, vExpected);
    EXPECT_EQ(vParents, vExpected);
    EXPECT_TRUE(leaf.getChildBegin() == leaf.getChildEnd());
    EXPECT_TRUE(top.getParentBegin() == top.getParentEnd());
}

TEST_F(OptimizerExpressionDataTest, IteratorOverAnExpressionWithoutDataFailsAnAssertion) {
    const auto pVariable = variable("v", Node(constant({1.0})));
    const DataImpl variableData(m_Container, Node(pVariable));
    EXPECT_TRUE((*variableData.getChildBegin()).isNull());
    EXPECT_EQ(takeAssertions(), Texts{"!pData.isNull() && \"Container should have returned a valid "
                                      "data for \" \"specified expression.\""});
}

TEST_F(OptimizerExpressionDataTest, EveryOperationIsTraced) {
    const auto pFunction = call("f", {Node(variable("a"))});
    DataImpl& one = data(Node(pFunction));
    const OptimizerExpressionData& interface = one;
    one.key();
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"key", [&] { one.key(); }},
        {"hash", [&] { one.hash(); }},
        {"operator==", [&] { static_cast<void>(interface == one); }},
        {"operator!=", [&] { static_cast<void>(interface != one); }},
        {"getComplexity", [&] { one.getComplexity(); }},
        {"isValid", [&] { one.isValid(); }},
        {"getExpression", [&] { one.getExpression(); }},
        {"write", [&] { textOf(one); }},
        {"getChildBegin", [&] { one.getChildBegin(); }},
        {"getChildEnd", [&] { one.getChildEnd(); }},
        {"getParentBegin", [&] { one.getParentBegin(); }},
        {"getParentEnd", [&] { one.getParentEnd(); }},
        {"invalidate", [&] { one.invalidate(); }},
    };
    LogCapture log(DataLogger, log4cplus::TRACE_LOG_LEVEL);
    for (const auto& [szName, operation] : operations) {
        log.clear();
        operation();
        const Texts vTrace = log.messages(log4cplus::TRACE_LOG_LEVEL);
        const std::string strLabel = std::string("OptimizerExpressionDataImpl::") + szName;
        ASSERT_GE(vTrace.size(), 2u) << szName;
        EXPECT_EQ(vTrace.front(), "ENTER: " + strLabel);
        EXPECT_EQ(vTrace.back(), "EXIT: " + strLabel);
    }
}

TEST_F(OptimizerExpressionDataTest, DataAndSpecializersAreCountedUnderTheirAccounts) {
    EXPECT_STREQ(DataImpl::getMemAccountName(), "OptimizerExpressionDataImpl");
    const auto countOf = [](const std::string& in_strAccount) {
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.name == in_strAccount) {
                return account.liveBlocks;
            }
        }
        return std::size_t(0);
    };
    const Node pVariable(variable("v"));
    const std::size_t uiData = countOf("OptimizerExpressionDataImpl");
    const std::size_t uiSpecializers = countOf("OptimizerExpressionDataSpecializerImpl");
    add(pVariable);
    EXPECT_EQ(countOf("OptimizerExpressionDataImpl"), uiData + 1);
    EXPECT_EQ(countOf("OptimizerExpressionDataSpecializerImpl"), uiSpecializers + 1);
}

TEST_F(OptimizerExpressionDataTest, CopyingTheBaseOfAContainerDoesNothing) {
    struct Base : OptimizerExpressionDataContainer {
        CountedObjPtr<OptimizerExpressionData>& get(const Expression&) override { return m_pNone; }
        CountedObjPtr<OptimizerExpressionData> m_pNone;
    };
    Base first;
    first.getKeys().insert("#a", {});
    const auto uiB = first.getKeys().insert("#b", {});
    Base copy(first);
    EXPECT_NE(copy.getKeys().insert("#b", {}), uiB);
    copy = first;
    EXPECT_EQ(copy.getKeys().text(0), "#b");
}

} // namespace

} // namespace Velmora::Math::Xpr
