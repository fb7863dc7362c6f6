#include "math/xpr/src/Resolver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include <log4cplus/hierarchy.h>
#include <log4cplus/logger.h>

#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include "math/xpr/ResolverFixture.h"
#include "math/xpr/src/UnknownFunction.h"
#include "math/xpr/src/UnknownVariable.h"
#include "support/AssertionCapture.h"
#include "support/GraphInvariants.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {

namespace {

using Testing::checkInvariants;
using Testing::checkLinked;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::LinkBench;
using ::testing::Not;
using namespace ResolverTesting;

TEST_F(ResolverTest, ANameWithoutAPointIsSoughtInTheScriptOfThatNameThenGlobally) {
    LinkBench bench;
    bench.m_Raw.add(variable("a", named<UnknownVariable>("x")), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(steps("trying to resolve"),
                ElementsAre("trying to resolve expression=\"x\" with \"x.x\"",
                            "trying to resolve expression=\"x\" with \"x\""));
}

TEST_F(ResolverTest, ANameOfAScriptIsSoughtThereThenUnderItsOwnNameThenGlobally) {
    LinkBench bench;
    bench.m_Raw.add(variable("s.a", named<UnknownVariable>("s.x")), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(steps("trying to resolve"),
                ElementsAre("trying to resolve expression=\"s.x\" with \"s.x\"",
                            "trying to resolve expression=\"s.x\" with \"x.x\"",
                            "trying to resolve expression=\"s.x\" with \"x\""));
}

TEST_F(ResolverTest, AQualifiedNameIsSoughtInItsOwnScriptOnly) {
    LinkBench bench;
    bench.m_Raw.add(variable("s.a", named<UnknownVariable>("s.t.y")), false);
    bench.m_Raw.add(variable("s.b", named<UnknownVariable>("s.t.u.v")), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(steps("trying to resolve"),
                ElementsAre("trying to resolve expression=\"s.t.y\" with \"t.y\"",
                            "trying to resolve expression=\"s.t.u.v\" with \"t.u.v\""));
}

TEST_F(ResolverTest, TheSearchGoesThroughLinkedRawScriptAndRegistry) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = sizeOf\n"));
    m_Log.clear();
    ASSERT_TRUE(bench.link());
    const std::string strPlace = at("s", 1, 5);
    const std::vector<std::string> vMessages = m_Log.messages(log4cplus::DEBUG_LOG_LEVEL);
    const auto search = [](const std::string& in_strName, const std::string& in_strScript) {
        return std::vector<std::string>{"trying to resolve expression=\"s.sizeOf\" with \"" +
                                            in_strName + "\"",
                                        "searching expression: " + in_strName + "...",
                                        "searching in dictionnary of linked expressions...",
                                        "searching in dictionnary of raw expressions...",
                                        "searching in for a script...",
                                        "searching for script expression \"" + in_strScript + "\"",
                                        "searching in the Registry..."};
    };
    std::vector<std::string> vExpected{"resolving links of variable: s.a",
                                       strPlace.substr(0, strPlace.size() - 1) +
                                           "resolving unknown variable s.sizeOf"};
    for (const auto& vSearch :
         {search("s.sizeOf", "s"), search("sizeOf.sizeOf", "sizeOf"), search("sizeOf", "sizeOf")}) {
        vExpected.insert(vExpected.end(), vSearch.begin(), vSearch.end());
    }
    vExpected.insert(vExpected.end(),
                     {"found the expression: sizeOf in the Registry",
                      "resolving links of function: sizeOf", "resolving links of argument: x&",
                      "resolved expression=s.sizeOf with sizeOf"});
    ASSERT_EQ(vMessages.size(), vExpected.size() + 1);
    for (std::size_t ui = 0; ui != vExpected.size(); ++ui) {
        EXPECT_THAT(vMessages[ui], ::testing::StartsWith(vExpected[ui]));
    }
    EXPECT_THAT(vMessages.back(), HasSubstr("Replacing s.a child[0]=s.sizeOf("));
}

TEST_F(ResolverTest, EachPlaceOfTheSearchSaysWhatItFound) {
    LinkBench bench{{"scripts/t.xpr", "y = 2\n"}};
    ASSERT_TRUE(bench.load("s", "a = t.y + b + b\nb = 1\n"));
    m_Log.clear();
    ASSERT_TRUE(bench.link());
    EXPECT_THAT(steps("found"),
                ElementsAre("found the script expression: t.y",
                            "found the expression s.b in the dictionnary of raw expressions",
                            "found the expression s.b in the dictionnary of linked expressions"));
}

TEST_F(ResolverTest, WhatTheHierarchyOfLoggersDisablesIsNotWritten) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = b\nb = 1\n"));
    m_Log.clear();
    log4cplus::Hierarchy& hierarchy = log4cplus::Logger::getDefaultHierarchy();
    hierarchy.disableDebug();
    const bool bLinked = bench.link();
    hierarchy.enableAll();
    EXPECT_TRUE(bLinked);
    EXPECT_THAT(steps(""), IsEmpty());
}

TEST_F(ResolverTest, AReplacementIsLoggedWithBothIdentifiers) {
    LinkBench bench;
    const Handle<Expression> pUnknown(named<UnknownVariable>("s.b"));
    const Handle<Expression> pB(variable("s.b", constant(1)));
    bench.m_Raw.add(pB, false);
    bench.m_Raw.add(variable("s.a", pUnknown), false);
    ASSERT_TRUE(bench.link());
    std::ostringstream expected;
    expected << "Replacing s.a child[0]=s.b(" << Handle<ExpressionBaseImpl>(pUnknown)->getId()
             << ") --> s.b(" << Handle<ExpressionBaseImpl>(pB)->getId() << ")";
    EXPECT_THAT(steps("Replacing"), ElementsAre(expected.str()));
}

TEST_F(ResolverTest, AFileOfABuiltInsNameShadowsIt) {
    LinkBench bench{{"scripts/sizeOf.xpr", "sizeOf = 3\n"}};
    ASSERT_TRUE(bench.load("s", "a = sizeOf\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[3]");
    EXPECT_THAT(bench.files().getAskedPaths(), ElementsAre("scripts/s.xpr", "scripts/sizeOf.xpr"));
}

TEST_F(ResolverTest, ABuiltInVariableIsSharedByItsUses) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = test.nine\nb = test.nine\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[9]");
    EXPECT_EQ(valueOf<Expression>(bench.linked<Expression>("s.a")),
              valueOf<Expression>(bench.linked<Expression>("s.b")));
}

TEST_F(ResolverTest, EachUseOfABuiltInHasItsOwnInstanceWithItsOwnSettings) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = test.echo<1>(4)\nb = test.echo<2>(5)\n"));
    ASSERT_TRUE(bench.link());
    const auto pA = valueOf<FunctionBaseImpl>(bench.linked<Expression>("s.a"));
    const auto pB = valueOf<FunctionBaseImpl>(bench.linked<Expression>("s.b"));
    EXPECT_STREQ(pA->getName(), "test.echo");
    EXPECT_NE(pA, pB);
    EXPECT_EQ(int(pA->getParameter("Level")->getValue()), 1);
    EXPECT_EQ(int(pB->getParameter("Level")->getValue()), 2);
    EXPECT_EQ(bench.value("s.a"), "[4]");
    EXPECT_EQ(bench.value("s.b"), "[5]");
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
}

TEST_F(ResolverTest, ABuiltInTakesThePositionOfItsCall) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1 + test.echo<1>(4)\nb = test.echo<1>(4)\n"));
    ASSERT_TRUE(bench.link());
    const auto pSum = valueOf<Expression>(bench.linked<Expression>("s.a"));
    EXPECT_EQ(valueOf<ExpressionBaseImpl>(argumentOf(pSum, 1))->getSourceInfo() + std::string(":"),
              at("s", 1, 9));
    EXPECT_EQ(valueOf<ExpressionBaseImpl>(bench.linked<Expression>("s.b"))->getSourceInfo() +
                  std::string(":"),
              at("s", 2, 5));
}

TEST_F(ResolverTest, AScriptFunctionKeepsThePositionOfItsDefinition) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "one() = 1\na = one()\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(valueOf<ExpressionBaseImpl>(bench.linked<Expression>("s.a"))->getSourceInfo() +
                  std::string(":"),
              at("s", 1, 1));
}

TEST_F(ResolverTest, AnInputKeepsItsEmptyPosition) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "inputvar in\na = in\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_STREQ(bench.linked<ExpressionBaseImpl>("s.in")->getSourceInfo(), "");
}

TEST_F(ResolverTest, TwoUsesOfAFunctionAreTwoObjectsAndTwoUsesOfAVariableOne) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "v = 2\nf(x, y) = x + y\na = f(v, v) + f(v, 1)\n"));
    ASSERT_TRUE(bench.link());
    const auto pSum = valueOf<Expression>(bench.linked<Expression>("s.a"));
    const auto pFirst = valueOf<Expression>(argumentOf(pSum, 0));
    const auto pSecond = valueOf<Expression>(argumentOf(pSum, 1));
    EXPECT_FALSE(Handle<ScriptFunctionImpl>(pFirst).isNull());
    EXPECT_NE(pFirst, pSecond);
    const auto pV = bench.linked<Expression>("s.v");
    EXPECT_EQ(valueOf<Expression>(argumentOf(pFirst, 0)), pV);
    EXPECT_EQ(valueOf<Expression>(argumentOf(pFirst, 1)), pV);
    EXPECT_EQ(valueOf<Expression>(argumentOf(pSecond, 0)), pV);
    EXPECT_EQ(bench.value("s.a"), "[7]");
}

TEST_F(ResolverTest, ThePrototypeIsNeverHandedOut) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = f(1, 2)\nf(x, y) = x + y\nb = f(3, 4)\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_NE(valueOf<Expression>(bench.linked<Expression>("s.a")),
              bench.linked<Expression>("s.f"));
    EXPECT_NE(valueOf<Expression>(bench.linked<Expression>("s.b")),
              bench.linked<Expression>("s.f"));
    EXPECT_EQ(bench.value("s.a"), "[3]");
    EXPECT_EQ(bench.value("s.b"), "[7]");
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
}

TEST_F(ResolverTest, AFunctionFoundForAVariableIsTakenAsItIs) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "two() = 2\na = two\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[2]");
}

TEST_F(ResolverTest, CallingAVariableFailsWithItsPosition) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "v = 2\na = v(1)\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("!pFunc.isNull()"));
    EXPECT_THAT(errors(),
                ElementsAre(at("s", 2, 5) + "can't call an expression that isn't a function: s.v"));
}

TEST_F(ResolverTest, AFunctionReadsTheVariablesOfTheLinkedGraphItself) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "inputvar left\n"
                                "scale = 10\n"
                                "f(a, b) = a + b + left * scale\n"
                                "g(a, b) = f(a, b) + f(b, a)\n"
                                "y = f(1, 2)\n"
                                "z = g(1, 2) + left\n"));
    ASSERT_TRUE(bench.link());
    DoubleVector vFrame;
    for (const double dFrame : {1.0, 2.0}) {
        vFrame = DoubleVector{dFrame};
        bench.set("s.left", vFrame);
        std::ostringstream y, z;
        y << DoubleVector{3 + dFrame * 10};
        z << DoubleVector{2 * (3 + dFrame * 10) + dFrame};
        EXPECT_EQ(bench.value("s.y"), y.str());
        EXPECT_EQ(bench.value("s.z"), z.str());
    }
    bench.linked<VariableImpl>("s.scale")->setValue(constant(100));
    EXPECT_EQ(bench.value("s.y"), "[203]");
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
    EXPECT_TRUE(checkLinked(bench.m_Linked));
}

TEST_F(ResolverTest, AVariableOfAnotherScriptIsSharedByTheFunctionsThatReadIt) {
    LinkBench bench{{"scripts/t.xpr", "inputvar in\ntwice(a, b) = in + in\n"}};
    ASSERT_TRUE(bench.load("s", "y = t.twice(0, 0)\nz = t.twice(0, 0) + t.in\n"));
    ASSERT_TRUE(bench.link());
    const auto inputOf = [](const Handle<Expression>& in_pCall) {
        const auto pSum = Handle<ScriptFunctionImpl>(in_pCall)->getImplementation();
        return valueOf<Expression>(argumentOf(Handle<Expression>(pSum), 0));
    };
    const auto pZ = valueOf<Expression>(bench.linked<Expression>("s.z"));
    const auto pIn = valueOf<Expression>(argumentOf(pZ, 1));
    EXPECT_EQ(inputOf(valueOf<Expression>(bench.linked<Expression>("s.y"))), pIn);
    EXPECT_EQ(inputOf(valueOf<Expression>(argumentOf(pZ, 0))), pIn);
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
}

TEST_F(ResolverTest, ParametersReachTheCallsInsideAFunction) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "wrap<n>(x) = test.echo<n>(x)\n"
                                "outer<m>(x) = wrap<m>(x)\n"
                                "a = wrap<7>(1)\n"
                                "b = outer<8>(2)\n"));
    ASSERT_TRUE(bench.link());
    const auto pWrap = valueOf<ScriptFunctionImpl>(bench.linked<Expression>("s.a"));
    const Handle<Function> pEcho(pWrap->getImplementation());
    EXPECT_EQ(int(pEcho->getParameter(std::size_t(0))->getValue()), 7);
    const auto pOuter = valueOf<ScriptFunctionImpl>(bench.linked<Expression>("s.b"));
    const Handle<ScriptFunctionImpl> pInner(pOuter->getImplementation());
    const Handle<Function> pDeepEcho(pInner->getImplementation());
    EXPECT_EQ(int(pDeepEcho->getParameter(std::size_t(0))->getValue()), 8);
    EXPECT_EQ(bench.value("s.b"), "[2]");
}

TEST_F(ResolverTest, TheStepsOfACallAreLogged) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = test.echo<5>(4)\n"));
    m_Log.clear();
    ASSERT_TRUE(bench.link());
    const auto pCall = valueOf<FunctionBaseImpl>(bench.linked<Expression>("s.a"));
    const std::string strTarget = " --> test.echo(" + std::to_string(pCall->getId()) + ")";
    const auto vParameters = steps("Resolver::copyFunctionParameters");
    ASSERT_EQ(vParameters.size(), 2u);
    EXPECT_THAT(vParameters[0],
                ::testing::StartsWith("Resolver::copyFunctionParameters : Copying parameters from "
                                      "s.test.echo("));
    EXPECT_THAT(vParameters[0], ::testing::EndsWith(strTarget));
    EXPECT_EQ(vParameters[1], "Resolver::copyFunctionParameters : copy parameter[0]=Level");
    const auto vArguments = steps("Resolver::copyFunctionArguments");
    ASSERT_EQ(vArguments.size(), 2u);
    EXPECT_THAT(vArguments[0],
                ::testing::StartsWith("Resolver::copyFunctionArguments : Copying arguments from "
                                      "s.test.echo("));
    EXPECT_THAT(vArguments[0], ::testing::EndsWith(strTarget));
    EXPECT_EQ(vArguments[1], "Resolver::copyFunctionArguments : copy argument[0]=x&" +
                                 std::to_string(pCall->getId()));
}

TEST_F(ResolverTest, AScriptIsReadOnceThoughNamesAreMissingInIt) {
    LinkBench bench{{"scripts/t.xpr", "known = 1\n"}};
    ASSERT_TRUE(bench.load("s", "a = t.known\nb = t.missing\nc = t.missing\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(errors(), ElementsAre(at("s", 2, 5) + "can't resolve expression: s.t.missing",
                                      at("s", 3, 5) + "can't resolve expression: s.t.missing"));
    const auto vAsked = bench.files().getAskedPaths();
    EXPECT_EQ(std::count(vAsked.begin(), vAsked.end(), "scripts/t.xpr"), 1);
    EXPECT_EQ(bench.value("s.a"), "[1]");
}

TEST_F(ResolverTest, ConstantThatIsVisitedAgainIsLinkedAnew) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "f(x) = 2 + x\na = f(2)\n"));
    ASSERT_TRUE(bench.link());
    const Handle<VariableImpl> pA(bench.m_Linked.findVariable("s.a"));
    const Handle<ExpressionBaseImpl> pConstant = pA->getValue()->getChildAt(0)->getChildAt(0);
    std::vector<std::string> vParents;
    for (const auto* p = pConstant->getParentBegin(); p != pConstant->getParentEnd(); ++p) {
        const std::string strName((*p)->getName());
        vParents.push_back(strName.substr(0, strName.find('&')));
    }
    // The body of the call leads to the argument once more.
    EXPECT_THAT(vParents, ElementsAre("Left", "Left", "x"));
}

TEST_F(ResolverTest, ConstantsHaveNoLinksToResolve) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 1 + 2\n"));
    m_Log.clear();
    ASSERT_TRUE(bench.link());
    EXPECT_FALSE(steps("resolving links of").empty());
    EXPECT_THAT(steps("resolving links of"),
                ::testing::Each(::testing::Not(::testing::HasSubstr("Constant_"))));
}

TEST_F(ResolverTest, EachParameterAndArgumentOfACallIsLoggedWithItsNumber) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = isGreater(debounceOnOff<1, 2>(3), 4)\n"));
    m_Log.clear();
    ASSERT_TRUE(bench.link());
    EXPECT_THAT(
        steps("Resolver::copyFunctionParameters : copy"),
        ElementsAre(::testing::HasSubstr("parameter[0]="), ::testing::HasSubstr("parameter[1]=")));
    EXPECT_THAT(steps("Resolver::copyFunctionArguments : copy"),
                ::testing::IsSupersetOf(
                    {::testing::HasSubstr("argument[0]="), ::testing::HasSubstr("argument[1]=")}));
}

TEST_F(ResolverTest, ParametersAreBoundAheadOfArguments) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = test.echo(1, 2, 3)\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(errors(), ElementsAre(at("s", 1, 5) + "Function test.echo expects 1 parameter(s)"));
}

struct BadCall {
    const char* m_szScript;
    int m_iLine;
    int m_iColumn;
    const char* m_szReport;
};

class BadCallTest : public ResolverTest, public ::testing::WithParamInterface<BadCall> {};

TEST_P(BadCallTest, IsReportedAtItsPosition) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", GetParam().m_szScript));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(errors(), ElementsAre(at("s", GetParam().m_iLine, GetParam().m_iColumn) +
                                      GetParam().m_szReport));
}

INSTANTIATE_TEST_SUITE_P(
    Counts, BadCallTest,
    ::testing::Values(
        BadCall{"f(x, y) = x + y\na = f(1)\n", 2, 5, "Function s.f expects 2 argument(s)"},
        BadCall{"f(x, y) = x + y\na = 2 * f(1, 2, 3)\n", 2, 9,
                "Function s.f expects 2 argument(s)"},
        BadCall{"two() = 2\na = two(1)\n", 2, 5, "Function s.two expects 0 argument(s)"},
        BadCall{"f(x, y) = x + y\na = f<1>(1, 2)\n", 2, 5, "Function s.f expects 0 parameter(s)"},
        BadCall{"f<p>(x, y) = x + y\na = f(1, 2)\n", 2, 5, "Function s.f expects 1 parameter(s)"},
        BadCall{"a = test.echo<1>(1, 2)\n", 1, 5, "Function test.echo expects 1 argument(s)"},
        BadCall{"a = test.echo<1, 2>(1)\n", 1, 5, "Function test.echo expects 1 parameter(s)"}));

TEST_F(ResolverTest, ExpressionsThatUseEachOtherAreRefused) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = b\nb = a\n"));
    EXPECT_FALSE(bench.link());
    const auto recursion = [](int in_iLine, const char* in_szName) {
        return at("s", in_iLine, 1) +
               "recursive expression calls detected for expression: " + in_szName +
               ". Recursive expression calls are not allowed.";
    };
    EXPECT_THAT(errors(),
                ElementsAre(recursion(1, "s.a"), at("s", 2, 5) + "can't resolve expression: s.a",
                            at("s", 1, 5) + "can't resolve expression: s.b", recursion(2, "s.b"),
                            at("s", 1, 5) + "can't resolve expression: s.b",
                            at("s", 2, 5) + "can't resolve expression: s.a"));
}

TEST_F(ResolverTest, AFunctionThatCallsItselfIsRefused) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "f(x, y) = f(y, x)\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(errors(),
                ElementsAre(at("s", 1, 1) + "recursive expression calls detected for expression: "
                                            "s.f. Recursive expression calls are not allowed.",
                            at("s", 1, 11) + "can't resolve expression: s.f"));
}

TEST_F(ResolverTest, AFunctionThatCallsItselfInAnArgumentIsNoRecursion) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "f(x, y) = x + y\na = f(f(1, 2), f(3, f(4, 5)))\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[15]");
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
}

TEST_F(ResolverTest, ANameThatFailsInItsOwnScriptIsSoughtOn) {
    LinkBench bench{{"scripts/x.xpr", "x = 4\n"}};
    ASSERT_TRUE(bench.load("s", "x = nope\na = x\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[4]");
}

TEST_F(ResolverTest, EqualConstantsBecomeOneObject) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 2\nb = 2 + 2\nf(x, y) = x + 2\nc = f(2, 3)\n"));
    ASSERT_TRUE(bench.link());
    const auto pTwo = valueOf<Expression>(bench.linked<Expression>("s.a"));
    const auto pSum = valueOf<Expression>(bench.linked<Expression>("s.b"));
    const auto pCall = valueOf<ScriptFunctionImpl>(bench.linked<Expression>("s.c"));
    EXPECT_EQ(valueOf<Expression>(argumentOf(pSum, 0)), pTwo);
    EXPECT_EQ(valueOf<Expression>(argumentOf(pSum, 1)), pTwo);
    EXPECT_EQ(valueOf<Expression>(argumentOf(Handle<Expression>(pCall), 0)), pTwo);
    EXPECT_EQ(valueOf<Expression>(argumentOf(Handle<Expression>(pCall->getImplementation()), 1)),
              pTwo);
    EXPECT_TRUE(checkInvariants(bench.m_Linked));
}

/// A constant of a host's that has a name of its own.
class NamedConstant : public ConstantBase {
public:
    NamedConstant(const char* in_szName, const DoubleVector& in_vValue)
        : m_strName(in_szName), m_vValue(in_vValue) {}

    const char* getName() const override { return m_strName.c_str(); }
    const DoubleVector& getValue() const override { return m_vValue; }
    ConstantBase* createNew(const DoubleVector& in_vValue) const override {
        return new NamedConstant(m_strName.c_str(), in_vValue);
    }

private:
    const std::string m_strName;
    const DoubleVector m_vValue;
};

TEST_F(ResolverTest, ConstantsOfAHostAreSharedByTheirNames) {
    LinkBench bench;
    const auto add = [&](const char* in_szEntry, const char* in_szConstant) {
        bench.m_Raw.add(variable(in_szEntry, Handle<Expression>(new NamedConstant(
                                                 in_szConstant, DoubleVector{2}))),
                        false);
    };
    add("s.a", "One");
    add("s.b", "Other");
    add("s.c", "One");
    add("s.d", "Other");
    ASSERT_TRUE(bench.link());
    const auto valueOfEntry = [&](const char* in_szEntry) {
        return valueOf<Expression>(bench.linked<Expression>(in_szEntry));
    };
    EXPECT_EQ(valueOfEntry("s.a"), valueOfEntry("s.c"));
    EXPECT_EQ(valueOfEntry("s.b"), valueOfEntry("s.d"));
    EXPECT_NE(valueOfEntry("s.a"), valueOfEntry("s.b"));
}

TEST_F(ResolverTest, ConstantsOfDifferentSignsOfZeroStayApart) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = 0\nb = -0.0\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[0]");
    EXPECT_EQ(bench.value("s.b"), "[-0]");
}

TEST_F(ResolverTest, AScriptThatIsBrokenFurtherDownLeavesItsFirstDefinitionsForLaterUses) {
    LinkBench bench{{"scripts/t.xpr", "a = 1\nb = (\n"}};
    ASSERT_TRUE(bench.load("s", "first = t.a\nsecond = t.a\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_EQ(bench.value("s.first"), "none");
    EXPECT_EQ(bench.value("s.second"), "[1]");
}

TEST_F(ResolverTest, AScriptIsReadOncePerRunHoweverOftenItsNamesAreUsed) {
    LinkBench bench{{"scripts/test.xpr", "never = 1\n"}};
    std::string strScript = "a0 = test.echo<0>(1)\n";
    for (int i = 1; i != 20; ++i) {
        strScript += "a" + std::to_string(i) + " = test.echo<0>(1)\n";
    }
    ASSERT_TRUE(bench.load("s", strScript));
    ASSERT_TRUE(bench.link());
    const auto vAsked = bench.files().getAskedPaths();
    EXPECT_EQ(std::count(vAsked.begin(), vAsked.end(), "scripts/test.xpr"), 1);
}

TEST_F(ResolverTest, ANameNeverLeadsIntoAnotherDirectory) {
    LinkBench bench{{"scripts/sub/*x*/.xpr", "b = 1\n"}};
    ASSERT_TRUE(bench.load("s", "a = sub/*x*/.b\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(bench.files().getAskedPaths(), IsEmpty());
    EXPECT_THAT(errors(), ElementsAre(at("s", 1, 5) + "can't resolve expression: s.sub/*x*/.b"));
}

TEST_F(ResolverTest, AnExpressionWithoutANameIsAnAssertion) {
    LinkBench bench;
    bench.m_Raw.add(variable("", constant(1)), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("! strExprName.empty()"));
}

TEST_F(ResolverTest, AScriptWithoutANameIsAnAssertion) {
    LinkBench bench;
    bench.m_Raw.add(variable("a", named<UnknownVariable>(".x")), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("strFileName.length()"));
}

TEST_F(ResolverTest, AnUnexpectedKindOfNodeIsAnAssertion) {
    LinkBench bench;
    bench.m_Raw.add(variable("a", Handle<Expression>(new Oddity)), false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("!pDomVal.isNull() && \"unexpected expression -> \" "
                            "\"XPR linker may need some modifications\""));
}

TEST_F(ResolverTest, AnArgumentFoundByNameIsAnAssertionAndIsTaken) {
    LinkBench bench;
    bench.m_Raw.add(variable("s.a", named<UnknownVariable>("s.test.argument")), false);
    EXPECT_TRUE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("pArg.isNull()"));
}

TEST_F(ResolverTest, ABuiltInThatNamesItselfAsAnotherIsAnAssertion) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = test.echo<1>(1)\nb = test.echoInDisguise<1>(2)\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("m_LinkedExpressions.add( pExpr )"));
    EXPECT_EQ(bench.value("s.a"), "[1]");
}

TEST_F(ResolverTest, ABuiltInThatCanNotBeCopiedIsAnAssertion) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = test.uncopyable<1>(1)\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("!pExpr.isNull() && \"can't duplicate expression\""));
}

TEST_F(ResolverTest, ABuiltInThatIsNoNodeIsReported) {
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "a = test.foreign\n"));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(errors(), ElementsAre("Must use same implementation base for all expressions.",
                                      at("s", 1, 5) + "can't resolve expression: s.test.foreign"));
}

TEST_F(ResolverTest, AResultThatStandsAboveThePlaceholderIsAnAssertion) {
    LinkBench bench;
    const Handle<Expression> pInner(variable("s.inner", named<UnknownVariable>("s.outer")));
    bench.m_Raw.add(variable("s.outer", pInner), false);
    bench.m_Raw.add(pInner, false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("!isParent( *in_pNewChild ) && \"Can't loop on a parent!\"",
                            "inout_pExpression->replaceChild( **iteChildExpr, pExpr ) != -1"));
}

TEST_F(ResolverTest, AConstantWhosePlaceIsTakenByWhatStandsAboveItIsAnAssertion) {
    LinkBench bench;
    const Handle<Expression> pInner(variable("s.inner", constant(1)));
    bench.m_Raw.add(variable("Constant_[1]", pInner), false);
    bench.m_Raw.add(pInner, false);
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("!isParent( *in_pNewChild ) && \"Can't loop on a parent!\"",
                            "inout_pExpression-> replaceChild( **iteChildExpr, pExpr ) != -1"));
}

} // namespace
} // namespace Velmora::Math::Xpr
