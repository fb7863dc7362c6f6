#include <velmora/math/xpr/FunctionBaseImpl.h>

#include <velmora/DiskFileSystem.h>
#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

const char* const Loop = "!isParent( *in_pChild ) && \"Can't loop on a parent!\"";

class FunctionBaseImplTest : public GraphTest {
protected:
    static Handle<RecordingFunction> function(const char* in_szName = "f") {
        return Handle<RecordingFunction>(new RecordingFunction(in_szName));
    }

    /// A function with the arguments a and b.
    static Handle<RecordingFunction> functionOfTwo() {
        auto pFunction = function();
        pFunction->addArgument("a");
        pFunction->addArgument("b");
        return pFunction;
    }

    static std::string numbered(const char* in_szName, const FunctionBaseImpl& in_Function) {
        return in_szName + ("&" + std::to_string(in_Function.getId()));
    }
};

TEST_F(FunctionBaseImplTest, NameIsUnamedUnlessGiven) {
    EXPECT_STREQ(Handle<RecordingFunction>(new RecordingFunction)->getName(), "unamed");
    EXPECT_STREQ(function("f")->getName(), "f");
}

TEST_F(FunctionBaseImplTest, NullNameIsRefused) {
    const auto pFunction = function();
    pFunction->setName("g");
    pFunction->setName(nullptr);
    EXPECT_EQ(takeAssertions(), Texts{"0 != in_szName"});
    EXPECT_STREQ(pFunction->getName(), "g");
    EXPECT_STREQ(function(nullptr)->getName(), "unamed");
    EXPECT_EQ(takeAssertions(), Texts{"0 != in_szName"});
}

TEST_F(FunctionBaseImplTest, AddedArgumentIsANumberedChildFoundByNameAndIndex) {
    const auto pFunction = functionOfTwo();
    ASSERT_EQ(pFunction->getArgumentCount(), 2u);
    const Handle<Variable> pFirst = pFunction->getArgument(std::size_t(0));
    const Handle<Variable> pSecond = pFunction->getArgument(1);
    EXPECT_FALSE(Handle<Argument>(pFirst).isNull());
    EXPECT_EQ(pFirst->getName(), numbered("a", *pFunction));
    EXPECT_EQ(pSecond->getName(), numbered("b", *pFunction));
    EXPECT_EQ(pFunction->getArgument("a").get(), pFirst.get());
    EXPECT_EQ(pFunction->getArgument("b").get(), pSecond.get());
    EXPECT_EQ(pFunction->getChildAt(0).get(), Handle<ExpressionBaseImpl>(pFirst).get());
    EXPECT_EQ(pFunction->getChildAt(1).get(), Handle<ExpressionBaseImpl>(pSecond).get());
}

TEST_F(FunctionBaseImplTest, ArgumentsAreWalkedInTheOrderInWhichTheyWereAdded) {
    const auto pFunction = function();
    Texts vNames;
    for (const char* szName : {"z", "a", "m", "b"}) {
        EXPECT_TRUE(pFunction->addArgument(szName));
    }
    for (auto ite = pFunction->getArgumentBegin(); ite != pFunction->getArgumentEnd(); ++ite) {
        vNames.push_back((*ite).first);
        EXPECT_EQ(pFunction->getArgument(ite)->getName(),
                  numbered((*ite).first.c_str(), *pFunction));
    }
    EXPECT_EQ(vNames, (Texts{"z", "a", "m", "b"}));
}

TEST_F(FunctionBaseImplTest, OneArgumentIsFoundUnderAnyName) {
    const auto pFunction = function();
    pFunction->addArgument("a");
    const Handle<Variable> pArgument = pFunction->getArgument(std::size_t(0));
    for (const char* szName : {"a", "b", ""}) {
        EXPECT_EQ(pFunction->getArgument(szName).get(), pArgument.get());
    }
    EXPECT_TRUE(pFunction->getArgument(static_cast<const char*>(nullptr)).isNull());
    EXPECT_EQ(takeAssertions(), Texts{"0 != in_szArgumentName"});
}

TEST_F(FunctionBaseImplTest, UnknownArgumentOfTwoIsNullAndNothingIsLogged) {
    EXPECT_TRUE(functionOfTwo()->getArgument("c").isNull());
    EXPECT_TRUE(function()->getArgument("c").isNull());
}

TEST_F(FunctionBaseImplTest, ArgumentIndexOutOfRangeIsLogged) {
    const auto pFunction = functionOfTwo();
    EXPECT_TRUE(pFunction->getArgument(2).isNull());
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Argument 2 does not exist for function f.  "
                                                     "This function expects 2 argument(s).")});
}

TEST_F(FunctionBaseImplTest, ParameterIndexOutOfRangeIsLogged) {
    const auto pFunction = function();
    pFunction->addParameter("p");
    EXPECT_FALSE(pFunction->getParameter(std::size_t(0)).isNull());
    EXPECT_TRUE(pFunction->getParameter(1).isNull());
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Parameter 1 does not exist for function f.  "
                                                     "This function expects 1 parameter(s).")});
}

TEST_F(FunctionBaseImplTest, UnknownParameterIsLoggedAlsoOnAFunctionOfOneParameter) {
    const auto pFunction = function();
    pFunction->addParameter("p");
    EXPECT_FALSE(pFunction->getParameter("p").isNull());
    EXPECT_TRUE(pFunction->getParameter("q").isNull());
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Unknown parameter name: q")});
    EXPECT_TRUE(pFunction->getParameter(static_cast<const char*>(nullptr)).isNull());
    EXPECT_EQ(takeAssertions(), Texts{"0 != in_szName"});
}

TEST_F(FunctionBaseImplTest, SecondArgumentOfANameTakesThePlaceOfTheFirst) {
    const auto pFunction = functionOfTwo();
    const Handle<ExpressionBaseImpl> pOld(pFunction->getArgument("a"));
    EXPECT_TRUE(pFunction->addArgument("a"));
    EXPECT_EQ(pFunction->getArgumentCount(), 2u);
    EXPECT_EQ(childrenOf(*pFunction).size(), 2u);
    EXPECT_NE(pFunction->getChildAt(0).get(), pOld.get());
    EXPECT_EQ(Handle<ExpressionBaseImpl>(pFunction->getArgument(std::size_t(0))).get(),
              pFunction->getChildAt(0).get());
    EXPECT_EQ(pFunction->getArgument("a")->getName(), numbered("a", *pFunction));
    EXPECT_EQ(parentsOf(*pOld), Nodes());
}

TEST_F(FunctionBaseImplTest, GivenVariableIsRenamedAndBecomesTheArgument) {
    const auto pFunction = functionOfTwo();
    const Handle<VariableImpl> pVariable(new VariableImpl);
    pVariable->setName("mine");
    EXPECT_TRUE(pFunction->addArgument("x", pVariable));
    EXPECT_EQ(pVariable->getName(), numbered("x", *pFunction));
    EXPECT_EQ(pFunction->getArgument("x").get(), static_cast<Variable*>(pVariable.get()));
    EXPECT_EQ(parentsOf(*pVariable), Nodes{pFunction.get()});
}

TEST_F(FunctionBaseImplTest, NamesMayBeGivenByTheObjectItself) {
    const auto pFunction = function();
    const Handle<VariableImpl> pVariable(new VariableImpl);
    const Handle<ParameterImpl> pParameter(new ParameterImpl);
    pVariable->setName("x");
    pParameter->setName("p");
    pFunction->addArgument("first");
    EXPECT_TRUE(pFunction->addArgument(pVariable->getName(), pVariable));
    EXPECT_TRUE(pFunction->addParameter(pParameter->getName(), pParameter));
    EXPECT_EQ(pFunction->getArgument("x").get(), static_cast<Variable*>(pVariable.get()));
    EXPECT_EQ(pFunction->getParameter("p").get(), pParameter.get());
}

TEST_F(FunctionBaseImplTest, NullNamesAndHandlesAreRefused) {
    const auto pFunction = function();
    EXPECT_FALSE(pFunction->addArgument(nullptr));
    EXPECT_FALSE(pFunction->addArgument(nullptr, Handle<VariableImpl>(new VariableImpl)));
    EXPECT_EQ(takeAssertions(), (Texts{"0 != in_szArgumentName", "0 != in_szArgumentName"}));
    EXPECT_FALSE(pFunction->addArgument("a", Handle<VariableImpl>()));
    EXPECT_EQ(takeAssertions(), Texts{"!in_pArgument.isNull()"});
    EXPECT_FALSE(pFunction->addParameter(nullptr));
    EXPECT_FALSE(pFunction->addParameter(nullptr, Handle<ParameterImpl>(new ParameterImpl)));
    EXPECT_EQ(takeAssertions(), (Texts{"0 != in_szParameterName", "0 != in_szParameterName"}));
    EXPECT_FALSE(pFunction->addParameter("p", Handle<ParameterImpl>()));
    EXPECT_EQ(takeAssertions(), Texts{"!in_pParam.isNull()"});
    EXPECT_EQ(pFunction->getArgumentCount(), 0u);
    EXPECT_EQ(pFunction->getParameterCount(), 0u);
}

TEST_F(FunctionBaseImplTest, RefusedLinkLeavesAnArgumentWithoutAVariable) {
    const auto pFunction = functionOfTwo();
    const Handle<VariableImpl> pAbove(new VariableImpl);
    Variable& above = *pAbove;
    above.setValue(Handle<Expression>(pFunction));
    EXPECT_TRUE(pFunction->addArgument("c", pAbove));
    EXPECT_EQ(takeAssertions(), Texts{Loop});
    EXPECT_EQ(pFunction->getArgumentCount(), 3u);
    EXPECT_EQ(childrenOf(*pFunction).size(), 2u);
    EXPECT_TRUE(pFunction->getArgument(2).isNull());
    EXPECT_TRUE(pFunction->getArgument("c").isNull());
    EXPECT_EQ(takeAssertions(), Texts{"!pVar.isNull()"});
    EXPECT_EQ(pAbove->getName(), numbered("c", *pFunction));
}

TEST_F(FunctionBaseImplTest, ParametersThatOutliveTheirFunctionHaveNone) {
    const Handle<ParameterImpl> pTaken(new ParameterImpl);
    const Handle<ParameterImpl> pRefused(new ParameterImpl);
    Handle<ParameterImpl> pCopy;
    {
        const auto pFunction = function();
        EXPECT_TRUE(pFunction->addParameter("p", pTaken));
        EXPECT_FALSE(pFunction->addParameter("p", pRefused));
        pCopy = new ParameterImpl(*pTaken);
        takeErrors();
    }
    for (const auto& pParameter : {pTaken, pRefused, pCopy}) {
        EXPECT_TRUE(pParameter->setValue(ParameterValue(3)));
        EXPECT_TRUE(pParameter->setValue(Handle<Parameter>()));
        EXPECT_EQ(takeAssertions(), Texts{"!m_pParentFunction.isNull()"});
    }
}

TEST_F(FunctionBaseImplTest, SecondParameterOfANameIsRefusedAndLogged) {
    const auto pFunction = function();
    const Handle<ParameterImpl> pFirst(new ParameterImpl);
    const Handle<ParameterImpl> pSecond(new ParameterImpl);
    EXPECT_TRUE(pFunction->addParameter("p", pFirst));
    EXPECT_FALSE(pFunction->addParameter("p", pSecond));
    EXPECT_EQ(takeErrors(),
              Texts{logged(NodeLogger, "Can't add the parameter. The function falready had one "
                                       "parameter named: p")});
    EXPECT_EQ(pFunction->getParameterCount(), 1u);
    EXPECT_EQ(pFunction->getParameter("p").get(), pFirst.get());
    EXPECT_STREQ(pSecond->getName(), "p");
    // It points at the function all the same.
    EXPECT_TRUE(pSecond->setValue(Handle<Parameter>()));
}

TEST_F(FunctionBaseImplTest, ParametersAreWalkedInTheOrderInWhichTheyWereAdded) {
    const auto pFunction = function();
    Texts vNames;
    for (const char* szName : {"z", "a", "m"}) {
        EXPECT_TRUE(pFunction->addParameter(szName));
    }
    for (auto ite = pFunction->getParameterBegin(); ite != pFunction->getParameterEnd(); ++ite) {
        vNames.push_back((*ite).first);
        EXPECT_EQ((*ite).first, (*ite).second->getName());
    }
    EXPECT_EQ(vNames, (Texts{"z", "a", "m"}));
}

TEST_F(FunctionBaseImplTest, ConfigurationHoldsEveryParameterWithTheValueOfItsLeaf) {
    const auto pFunction = function();
    const auto pOther = function("g");
    for (const char* szName : {"direct", "linked", "empty"}) {
        pFunction->addParameter(szName);
    }
    pOther->addParameter("source");
    const Handle<Parameter> pSource = pOther->getParameter("source");
    pSource->setValue(ParameterValue(2));
    pFunction->getParameter("direct")->setValue(ParameterValue(1));
    pFunction->getParameter("linked")->setValue(pSource);
    pFunction->m_vKeys = {"direct", "linked", "empty", "source"};
    evaluated(*pFunction);
    const TSHandle<VirtualFileSystem> pFileSystem(new DiskFileSystem);
    EXPECT_TRUE(pFunction->configure(pFileSystem));
    EXPECT_EQ(pFunction->m_vConfiguration, (Texts{"direct=1", "linked=2"}));
    EXPECT_EQ(pFunction->m_pFileSystem, pFileSystem.get());
    EXPECT_FALSE(pFunction->isValid());
}

TEST_F(FunctionBaseImplTest, FunctionWithoutParametersIsConfiguredToo) {
    const auto pFunction = function();
    EXPECT_TRUE(pFunction->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(pFunction->m_uiConfigurations, 1u);
    EXPECT_EQ(pFunction->m_vConfiguration, Texts());
}

TEST_F(FunctionBaseImplTest, EveryConfigureRunsInFull) {
    const auto pFunction = function();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(pFunction->configure(TSHandle<VirtualFileSystem>()));
        if (i == 1) {
            pFunction->invalidateConfig();
        }
    }
    EXPECT_EQ(pFunction->m_uiConfigurations, 3u);
}

TEST_F(FunctionBaseImplTest, RefusedConfigurationIsLogged) {
    const auto pFunction = function();
    pFunction->m_bConfigures = false;
    evaluated(*pFunction);
    EXPECT_FALSE(pFunction->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "failed to configure function: f")});
    EXPECT_FALSE(pFunction->isValid());
}

TEST_F(FunctionBaseImplTest, ReplaceMovesParentsAndTheParametersThatTookItsValues) {
    const auto pOld = function("old");
    const auto pNew = function("new");
    const auto pUser = function("user");
    const Handle<RecordingNode> pParent(new RecordingNode);
    pParent->addChild(Handle<ExpressionBaseImpl>(pOld), true);
    for (const char* szName : {"p", "q"}) {
        pOld->addParameter(szName);
        pUser->addParameter(szName);
        pUser->getParameter(szName)->setValue(pOld->getParameter(szName));
        pOld->getParameter(szName)->setValue(ParameterValue(1));
    }
    pUser->getParameter("q")->setValue(ParameterValue(5));
    pNew->addParameter("p");
    pNew->getParameter("p")->setValue(ParameterValue(2));
    EXPECT_TRUE(pOld->replace(Handle<ExpressionBaseImpl>(pNew)));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Unknown parameter name: q")});
    EXPECT_EQ(childrenOf(*pParent), Nodes{pNew.get()});
    EXPECT_EQ(pUser->getParameter("p")->getValue(), ParameterValue(2));
    EXPECT_EQ(pUser->getParameter("q")->getValue(), ParameterValue(5));
}

TEST_F(FunctionBaseImplTest, ReplaceBySomethingElseFailsWhenTheParentsHaveMoved) {
    const auto pOld = function();
    const Handle<RecordingNode> pParent(new RecordingNode);
    const Handle<RecordingNode> pNew(new RecordingNode);
    pParent->addChild(Handle<ExpressionBaseImpl>(pOld), true);
    EXPECT_FALSE(pOld->replace(Handle<ExpressionBaseImpl>(pNew)));
    EXPECT_EQ(takeAssertions(), Texts{"!pFunction.isNull()"});
    EXPECT_EQ(childrenOf(*pParent), Nodes{pNew.get()});
}

TEST_F(FunctionBaseImplTest, ReplaceByItselfFailsAtOnce) {
    const auto pFunction = function();
    pFunction->addParameter("p");
    const auto pUser = function();
    pUser->addParameter("p");
    pUser->getParameter("p")->setValue(pFunction->getParameter("p"));
    EXPECT_FALSE(pFunction->replace(Handle<ExpressionBaseImpl>(pFunction)));
    EXPECT_EQ(takeAssertions(), Texts{"in_pNewExpression != this"});
    EXPECT_EQ(&Handle<ParameterImpl>(pUser->getParameter("p"))->getLeafChild(),
              Handle<ParameterImpl>(pFunction->getParameter("p")).get());
}

TEST_F(FunctionBaseImplTest, CopyHasTheNameTheArgumentsAndTheParameters) {
    const auto pFunction = functionOfTwo();
    pFunction->addParameter("p");
    pFunction->getParameter("p")->setValue(ParameterValue(3));
    pFunction->getArgument("a")->setValue(Handle<Expression>(constant({1.0})));
    pFunction->setType("label");
    pFunction->setSourceInfo("place");
    evaluated(*pFunction);
    const Handle<RecordingFunction> pCopy(pFunction->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "f");
    EXPECT_STREQ(pCopy->getType(), "label");
    EXPECT_STREQ(pCopy->getSourceInfo(), "place");
    EXPECT_FALSE(pCopy->isValid());
    ASSERT_EQ(pCopy->getArgumentCount(), 2u);
    EXPECT_EQ(pCopy->getArgument("a")->getName(), numbered("a", *pCopy));
    EXPECT_EQ(pCopy->getArgument("b")->getName(), numbered("b", *pCopy));
    EXPECT_EQ(evaluated(*pCopy->getArgument("a")), Values{1.0});
    EXPECT_NE(pCopy->getArgument("a").get(), pFunction->getArgument("a").get());
    EXPECT_FALSE(Handle<Argument>(pCopy->getArgument("a")).isNull());
    ASSERT_EQ(pCopy->getParameterCount(), 1u);
    EXPECT_EQ(pCopy->getParameter("p")->getValue(), ParameterValue(3));
    EXPECT_NE(pCopy->getParameter("p").get(), pFunction->getParameter("p").get());
    EXPECT_EQ(pFunction->getArgument("a")->getName(), numbered("a", *pFunction));
}

TEST_F(FunctionBaseImplTest, CopiedArgumentTakesThePlaceOfADefaultOne) {
    const auto pSource = functionOfTwo();
    pSource->getArgument("b")->setValue(Handle<Expression>(constant({1.0})));
    const auto pCopy = functionOfTwo();
    ExpressionImplCopier copier;
    pCopy->fill(*pSource, copier);
    EXPECT_EQ(pCopy->getArgumentCount(), 2u);
    EXPECT_EQ(childrenOf(*pCopy).size(), 2u);
    EXPECT_EQ(evaluated(*pCopy->getArgument("b")), Values{1.0});
}

TEST_F(FunctionBaseImplTest, CopiedArgumentIsAnArgumentAndLogsNothing) {
    LogCapture logs(NodeLogger, log4cplus::DEBUG_LOG_LEVEL);
    const Handle<Argument> pArgument(new Argument);
    pArgument->setName("a");
    const Handle<Argument> pCopy(pArgument->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "a");
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL), Texts());
    EXPECT_STREQ(Argument::getMemAccountName(), "VariableImpl");
}

TEST_F(FunctionBaseImplTest, ParametersOutliveTheFunctionWithTheirHandles) {
    Handle<Parameter> pParameter;
    {
        const auto pFunction = function();
        pFunction->addParameter("p");
        pParameter = pFunction->getParameter("p");
        pParameter->setValue(ParameterValue(1));
    }
    EXPECT_EQ(pParameter->getValue(), ParameterValue(1));
}

} // namespace

} // namespace Velmora::Math::Xpr
