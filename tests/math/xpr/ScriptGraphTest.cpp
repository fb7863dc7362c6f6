#include <velmora/math/xpr/ScriptParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <velmora/MemAccounts.h>
#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/ParsedScript.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math::Xpr;
using namespace Velmora::Testing;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* ParserLogger = "quillmark.math.xpr.ScriptParser";

Handle<Expression> valueOf(const Handle<Expression>& in_pVariable) {
    return Handle<Expression>(Handle<VariableImpl>(in_pVariable)->getValue());
}

Handle<Expression> bodyOf(const Handle<Expression>& in_pFunction) {
    return Handle<Expression>(Handle<ScriptFunctionImpl>(in_pFunction)->getImplementation());
}

Handle<Expression> operand(const Handle<Expression>& in_pOperator, std::size_t in_uiIndex) {
    return valueOf(
        Handle<Expression>(Handle<FunctionBaseImpl>(in_pOperator)->getArgument(in_uiIndex)));
}

std::vector<double> evaluated(const Handle<Expression>& in_pExpression) {
    Math::DoubleVector vValue;
    EXPECT_TRUE(in_pExpression->evaluate(vValue));
    return std::vector<double>(vValue.begin(), vValue.end());
}

/// All that is logged at one level while a script is read.
std::vector<std::string> logOf(const std::string& in_strScript, log4cplus::LogLevel in_Level) {
    const AssertionCapture assertions;
    const LogCapture log(ParserLogger, log4cplus::TRACE_LOG_LEVEL);
    const ParsedScript script(in_strScript);
    return log.messages(in_Level);
}

std::vector<std::string> debugLogOf(const std::string& in_strScript) {
    return logOf(in_strScript, log4cplus::DEBUG_LOG_LEVEL);
}

/// How often each traced name was entered or left.
std::size_t countTraces(const std::vector<std::string>& in_vLines, const std::string& in_strName) {
    return static_cast<std::size_t>(
        std::count_if(in_vLines.begin(), in_vLines.end(), [&](const std::string& in_strLine) {
            const std::size_t uiAt = in_strLine.find(in_strName);
            return uiAt != std::string::npos && (uiAt + in_strName.size() == in_strLine.size() ||
                                                 !std::isalnum(static_cast<unsigned char>(
                                                     in_strLine[uiAt + in_strName.size()])));
        }));
}

TEST(ScriptGraphTest, FunctionOfOneArgumentBindsEveryNameToIt) {
    const ParsedScript script("y = 1\nf(x) = x + y\nf2(x) = t.u - g(z)\n");
    EXPECT_THAT(script.descriptions(),
                ElementsAre("s.y = [1]", "s.f(x) = add(x, x)", "s.f2(x) = sub(x, ?s.g(x))"));
    const Handle<Function> pFunction(script.expressions[1]);
    EXPECT_EQ(operand(bodyOf(script.expressions[1]), 1),
              Handle<Expression>(pFunction->getArgument(std::size_t{0})));
}

TEST(ScriptGraphTest, FunctionOfOtherThanOneArgumentComparesNames) {
    const ParsedScript script("g(x, z) = x + y\nh() = y\nk(x, z) = {z, s.z}\n");
    EXPECT_THAT(script.descriptions(), ElementsAre("s.g(x, z) = add(x, ?s.y)", "s.h() = ?s.y",
                                                   "s.k(x, z) = unamed(z, ?s.s.z)"));
}

TEST(ScriptGraphTest, CurrentFunctionDoesNotOutliveItsDefinition) {
    const ParsedScript script("f(x) = x\ny = x\n");
    EXPECT_THAT(script.descriptions(), ElementsAre("s.f(x) = x", "s.y = ?s.x"));
}

TEST(ScriptGraphTest, NamesAreQualifiedByTheScript) {
    EXPECT_THAT(ParsedScript("v = x + t.y", "dir/a.xpr").descriptions(),
                ElementsAre("a.v = add(?a.x, ?a.t.y)"));
    EXPECT_THAT(ParsedScript("v = x(1)", "b.xpr").descriptions(), ElementsAre("b.v = ?b.x([1])"));
}

TEST(ScriptGraphTest, ArgumentGivenTwiceStandsOnce) {
    EXPECT_THAT(ParsedScript("f(a, a) = b").descriptions(), ElementsAre("s.f(a) = a"));
}

TEST(ScriptGraphTest, ParameterGivenTwiceIsReported) {
    const LogCapture log;
    EXPECT_THAT(ParsedScript("f<p, p>(a) = g<p>(a)").descriptions(),
                ElementsAre("s.f<p>(a) = ?s.g<@p>(a)"));
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("Can't add the parameter. The function s.falready had one parameter "
                            "named: p"));
}

TEST(ScriptGraphTest, OperatorsComputeWhatTheyAreWrittenFor) {
    const ParsedScript script("a = 1 + 2\nb = 1 - 2\nc = 3 * 2\nd = 3 / 2\ne = {4, 5, 6}[2, 0..1]\n"
                              "f = if(0, 1, 2)\ng = {1, {2, 3}}\n");
    std::vector<std::vector<double>> vValues;
    for (const Handle<Expression>& pExpression : script.expressions) {
        vValues.push_back(evaluated(pExpression));
    }
    EXPECT_THAT(vValues,
                ElementsAre(ElementsAre(3), ElementsAre(-1), ElementsAre(6), ElementsAre(1.5),
                            ElementsAre(6, 4, 5), ElementsAre(2), ElementsAre(1, 2, 3)));
}

TEST(ScriptGraphTest, DescendingRangeCountsDown) {
    EXPECT_THAT(ParsedScript("v = x[2..0]").descriptions(),
                ElementsAre("s.v = Slice(?s.x, [2 1 0])"));
}

TEST(ScriptGraphTest, OperandsHaveUniqueNames) {
    const ParsedScript script("a = {1, 1}\nb = if(1, 1, 1)\n");
    std::vector<std::string> vNames;
    for (const Handle<Expression>& pExpression : script.expressions) {
        const Handle<FunctionBaseImpl> pOperator(valueOf(pExpression));
        for (auto ite = pOperator->getArgumentBegin(); ite != pOperator->getArgumentEnd(); ++ite) {
            vNames.push_back(ite->first);
            EXPECT_EQ(ite->first.size(), 36U);
        }
    }
    std::sort(vNames.begin(), vNames.end());
    EXPECT_EQ(vNames.size(), 5U);
    EXPECT_EQ(std::unique(vNames.begin(), vNames.end()), vNames.end());
}

TEST(ScriptGraphTest, IndexListHasLeftAndRight) {
    const ParsedScript script("x = a[0, 1]");
    const Handle<FunctionBaseImpl> pIndices(operand(valueOf(script.expressions[0]), 1));
    EXPECT_EQ(pIndices->getArgumentBegin()->first, "Left");
    EXPECT_EQ((++pIndices->getArgumentBegin())->first, "Right");
}

/// Where the source info of nodes points.
TEST(ScriptGraphTest, NodesKnowTheirPlace) {
    const ParsedScript script("\n  x = a + g(1) * 2 - {1, 2}\n\tf() = if(1,2,  3)\n");
    ASSERT_EQ(script.expressions.size(), 2U);
    EXPECT_EQ(sourceInfo(script.expressions[0]), position(2, 3));
    const Handle<Expression> pMinus = valueOf(script.expressions[0]);
    const Handle<Expression> pPlus = operand(pMinus, 0);
    const Handle<Expression> pProduct = operand(pPlus, 1);
    EXPECT_EQ(sourceInfo(pMinus), position(2, 20));
    EXPECT_EQ(sourceInfo(pPlus), position(2, 9));
    EXPECT_EQ(sourceInfo(operand(pPlus, 0)), position(2, 7));
    EXPECT_EQ(sourceInfo(pProduct), position(2, 16));
    EXPECT_EQ(sourceInfo(operand(pProduct, 0)), position(2, 11));
    EXPECT_EQ(sourceInfo(operand(pProduct, 1)), "");
    // Of the commas, the last one.
    EXPECT_EQ(sourceInfo(operand(pMinus, 1)), position(2, 24));
    EXPECT_EQ(sourceInfo(script.expressions[1]), position(3, 5));
    EXPECT_EQ(sourceInfo(bodyOf(script.expressions[1])), position(3, 17));
}

TEST(ScriptGraphTest, NodesWithoutAPlaceHaveNone) {
    const ParsedScript script("inputvar i\nf(x) = x[0]\na = {1}\n");
    EXPECT_EQ(sourceInfo(script.expressions[0]), "");
    const Handle<Expression> pSlice = bodyOf(script.expressions[1]);
    EXPECT_EQ(sourceInfo(pSlice), "");
    // An argument isn't the reference that led to it.
    EXPECT_EQ(sourceInfo(operand(pSlice, 0)), "");
    EXPECT_EQ(sourceInfo(valueOf(script.expressions[2])), "");
}

TEST(ScriptGraphTest, ParametersOfACallAreNumberedFromWhereAFailedAlternativeLeftOff) {
    const auto names = [](const char* in_szScript) {
        std::vector<std::string> vNames;
        const ParsedScript script(in_szScript);
        const Handle<FunctionBaseImpl> pCall(valueOf(script.expressions.at(0)));
        for (auto ite = pCall->getParameterBegin(); ite != pCall->getParameterEnd(); ++ite) {
            vNames.push_back(ite->first);
        }
        for (auto ite = pCall->getArgumentBegin(); ite != pCall->getArgumentEnd(); ++ite) {
            vNames.push_back(ite->first);
        }
        return vNames;
    };
    EXPECT_THAT(names("x = g<1>()"), ElementsAre("_1"));
    EXPECT_THAT(names("x = g<1, 2>()"), ElementsAre("_2", "_3"));
    EXPECT_THAT(names("x = g<1, 2>(a, b)"), ElementsAre("_0", "_1", "_0", "_1"));
}

TEST(ScriptGraphTest, ParameterOfTheDefinitionReachesTheCall) {
    const ParsedScript script("k<p>(x) = g<p>(x)");
    EXPECT_THAT(script.descriptions(), ElementsAre("s.k<p>(x) = ?s.g<@p>(x)"));
    const Handle<ParameterImpl> pInner(
        Handle<Function>(bodyOf(script.expressions[0]))->getParameter(std::size_t{0}));
    EXPECT_FALSE(pInner->hasDirectValue());
    Handle<Function>(script.expressions[0])->getParameter("p")->setValue(ParameterValue(7));
    EXPECT_EQ(static_cast<int>(pInner->getValue()), 7);
}

TEST(ScriptGraphTest, UnknownParameterNameIsReportedAndLeftOut) {
    const LogCapture log;
    const AssertionCapture assertions;
    EXPECT_THAT(ParsedScript("k<p>(x) = g<q>(x)").descriptions(),
                ElementsAre("s.k<p>(x) = ?s.g(x)"));
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), ElementsAre("Unknown parameter name: q"));
    EXPECT_THAT(assertions.expressions(), ElementsAre("!in_pParameter.isNull()"));
}

TEST(ScriptGraphTest, ParameterNameOutsideAFunctionIsLeftOut) {
    const AssertionCapture assertions;
    const ParsedScript script("s = f<p>(1)");
    EXPECT_FALSE(script.failed);
    EXPECT_THAT(script.descriptions(), ElementsAre("s.s = ?s.f([1])"));
    EXPECT_THAT(
        assertions.expressions(),
        ElementsAre("!m_pScriptParser->m_pCurrentFunction.isNull()", "!in_pParameter.isNull()"));
}

TEST(ScriptGraphTest, EmptyTextIsAValue) {
    const ParsedScript script("x = f<\"\">(a)");
    const Handle<ParameterImpl> pParameter(
        Handle<Function>(valueOf(script.expressions[0]))->getParameter(std::size_t{0}));
    EXPECT_TRUE(pParameter->hasDirectValue());
    EXPECT_EQ(pParameter->getValue().getTag(), ParameterValue::StringTag);
}

TEST(ScriptGraphTest, PowerEndsTheDefinitionOfAVariable) {
    const LogCapture log;
    const AssertionCapture assertions;
    const ParsedScript script("y = 1\nx = abc ^ 2\nz = 3\n");
    EXPECT_TRUE(script.failed);
    EXPECT_THAT(script.descriptions(), ElementsAre("s.y = [1]"));
    EXPECT_THAT(assertions.expressions(),
                ElementsAre("Not implemented : ScriptParser::ScriptParserImpl::newPowOperation",
                            "!pExpressionImpl.isNull() && \"invalid expression type\""));
    // The place is the one behind the last name.
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("Can't set a null expression",
                            "expression error:" + position(2, 8) +
                                "\"failed to set variable implementation\" while defining "
                                "variable: s.x"));
}

TEST(ScriptGraphTest, PowerEndsTheDefinitionOfAFunction) {
    const LogCapture log;
    const AssertionCapture assertions;
    EXPECT_TRUE(ParsedScript("f(x) = x ^ 2").failed);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("Can't set a null implementation",
                            "expression error:" + position(1, 9) +
                                "\"failed to set function implementation\" while defining "
                                "function: s.f"));
}

/// The constructs that go on with an operand that a power left null.
struct NullOperand {
    const char* m_szScript;
    const char* m_szDefinition;
    std::vector<std::string> m_vErrors;
    std::vector<std::string> m_vAssertions;
};

class NullOperandTest : public ::testing::TestWithParam<NullOperand> {};

TEST_P(NullOperandTest, LeavesAnOperatorWithoutAValue) {
    const LogCapture log;
    const AssertionCapture assertions;
    const ParsedScript script(GetParam().m_szScript);
    EXPECT_FALSE(script.failed);
    EXPECT_THAT(script.descriptions(), ElementsAre(GetParam().m_szDefinition));
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), ElementsAreArray(GetParam().m_vErrors));
    std::vector<std::string> vExpected{
        "Not implemented : ScriptParser::ScriptParserImpl::newPowOperation",
        "!pExpressionImpl.isNull() && \"invalid expression type\""};
    vExpected.insert(vExpected.end(), GetParam().m_vAssertions.begin(),
                     GetParam().m_vAssertions.end());
    EXPECT_THAT(assertions.expressions(), ElementsAreArray(vExpected));
}

INSTANTIATE_TEST_SUITE_P(
    All, NullOperandTest,
    ::testing::Values(
        NullOperand{"x = (a ^ 2) + 1", "s.x = add(null, [1])", {"Can't set a null expression"}, {}},
        NullOperand{"x = 1 + a ^ 2", "s.x = add([1], null)", {"Can't set a null expression"}, {}},
        NullOperand{"x = b[a ^ 2]", "s.x = Slice(?s.b, null)", {"Can't set a null expression"}, {}},
        NullOperand{"x = b[a ^ 2, 1]",
                    "s.x = Slice(?s.b, null)",
                    {"Can't set a null expression", "Can't set a null expression"},
                    {"pLeft->setValue( in_pLeftExpression )"}},
        NullOperand{"x = b[1, a ^ 2]",
                    "s.x = Slice(?s.b, null)",
                    {"Can't set a null expression", "Can't set a null expression"},
                    {"pRight->setValue( in_pRightExpression )"}},
        NullOperand{"x = f(a ^ 2, 1)", "s.x = ?s.f([1])", {}, {"!in_pExpression.isNull()"}},
        NullOperand{"x = {1, a ^ 2}", "s.x = unamed([1])", {}, {"!in_pExpression.isNull()"}},
        NullOperand{"x = if(1, 2, a ^ 2)", "s.x = if([1], [2])", {}, {"!in_pExpression.isNull()"}},
        NullOperand{"x = {a ^ 2, 1}[0]",
                    "s.x = Slice(null, [0])",
                    {"Can't set a null expression"},
                    {"!in_pExpression.isNull()", "!pFunction.isNull()",
                     "!pExpressionImpl.isNull() && \"invalid expression type\""}}));

TEST(ScriptGraphTest, VariableDefinitionPassesThroughTheFunctionDefinitions) {
    EXPECT_THAT(debugLogOf("x = 1\n"),
                ElementsAre("found new function definition: x", "found new function definition: x",
                            "found new function definition: x", "found new function definition: x",
                            "found new variable definition: x",
                            "found statement: \nx = 1\n\nfileName=\"s\" line=\"1\" column=\"1\"",
                            "successfuly parsed a new expression"));
}

TEST(ScriptGraphTest, ReferencePassesThroughTheCalls) {
    EXPECT_THAT(debugLogOf("f(x, y) = t.y - x;"),
                ElementsAre("found new function definition: f", "found new function definition: f",
                            "found new function definition: f",
                            "adding argument=\"x\" to function=\"s.f\"",
                            "adding argument=\"y\" to function=\"s.f\"",
                            "found function call to t.y", "found function call to t.y",
                            "found function call to t.y", "found function call to t.y",
                            "found reference to variable t.y", "found function call to x",
                            "found function call to x", "found function call to x",
                            "found function call to x", "found reference to variable x",
                            "variable x is an argument of the function s.f",
                            "setting implementation for function=s.f",
                            "found statement: \nf(x, y) = t.y - x;\nfileName=\"s\" line=\"1\" "
                            "column=\"1\"",
                            "successfuly parsed a new expression"));
}

TEST(ScriptGraphTest, InputDeclarationPassesThroughAllDefinitions) {
    EXPECT_THAT(
        debugLogOf("inputvar x"),
        ElementsAre(
            "found new function definition: inputvar", "found new function definition: inputvar",
            "found new function definition: inputvar", "found new function definition: inputvar",
            "found new variable definition: inputvar", "found new domain variable definition: x",
            "found statement: \ninputvar x\nfileName=\"s\" line=\"1\" column=\"1\"",
            "successfuly parsed a new expression"));
}

TEST(ScriptGraphTest, ParametersOfADefinitionAreAddedByEachAlternativeThatReadsThem) {
    EXPECT_THAT(debugLogOf("f<p>() = 1"),
                ElementsAre("found new function definition: f",
                            "adding parameter=\"p\" to function=\"s.f\"",
                            "found new function definition: f",
                            "adding parameter=\"p\" to function=\"s.f\"",
                            "setting implementation for function=s.f",
                            StartsWith("found statement"), "successfuly parsed a new expression"));
}

TEST(ScriptGraphTest, LiteralsAreFoundWithTheLineOfTheirFirstCharacter) {
    EXPECT_THAT(debugLogOf("\n\nx = /*\n*/ if({1, /*\n*/ 2}, 1, 2)\n"),
                AllOf(Contains("found: [???empty line(s)???] at line 1"),
                      Contains("found: [???empty line(s)???] at line 2"),
                      Contains("found: [concatenate] at line 4"),
                      Contains("found: [if] at line 4")));
    EXPECT_THAT(
        debugLogOf("# nothing\n# at all"),
        ElementsAre("found: [???end of file???] at line 2", "successfuly parsed a new expression"));
}

TEST(ScriptGraphTest, OperandsAreToldAsThoseOfAConcatenation) {
    const auto count = [](const char* in_szScript) {
        const std::vector<std::string> vLines = debugLogOf(in_szScript);
        return std::count(vLines.begin(), vLines.end(), "adding argument to concatenate operator");
    };
    EXPECT_EQ(count("x = {1, 2, 3}"), 2);
    EXPECT_EQ(count("x = if(1, 2, 3)"), 2);
    EXPECT_EQ(count("x = a[1, 2]"), 0);
}

TEST(ScriptGraphTest, EveryActionIsTraced) {
    const std::vector<std::string> vLines = logOf("inputvar i\nf<p>(x, y) = x + y - x * y / (x ^ "
                                                  "y)\ng() = h<p, \"t\", 1, 1.5>(1, a[1..2, 3])\n"
                                                  "c = if({1, 2}, 3, 4)\n",
                                                  log4cplus::TRACE_LOG_LEVEL);
    for (const char* szAction : {"saveExpression",
                                 "savePosition",
                                 "logFound",
                                 "foundStatement",
                                 "makeName",
                                 "newVariableDef",
                                 "newDomainVariableDef",
                                 "newFunctionDef",
                                 "addFunctionArgument",
                                 "addFunctionParameter",
                                 "setFunctionImplementation",
                                 "setVariable",
                                 "newVariable",
                                 "newFunction",
                                 "setFunctionArgument",
                                 "setFunctionParameter",
                                 "newConstant",
                                 "newIndexRange",
                                 "newParameterValueInt",
                                 "newParameterValueSizeT",
                                 "newParameterValueDouble",
                                 "newParameterValueIter",
                                 "newParameterValue",
                                 "newAddOperation",
                                 "newSubOperation",
                                 "newMultOperation",
                                 "newDivOperation",
                                 "newSliceOperation",
                                 "newPowOperation",
                                 "newConcatenateOperation",
                                 "newConcatenateOperationDef",
                                 "newIfOperationDef",
                                 "addConcatenateOperationArgument"}) {
        const std::string strName = std::string("ScriptParserImpl::") + szAction;
        EXPECT_GT(countTraces(vLines, strName), 0U) << strName;
        EXPECT_EQ(countTraces(vLines, strName) % 2, 0U) << strName;
    }
    EXPECT_EQ(countTraces(vLines, "ScriptParserImpl::addIfOperationArgument"), 0U);
    EXPECT_EQ(countTraces(vLines, "ScriptParserImpl::ScriptParserImpl"), 2U);
    EXPECT_EQ(countTraces(vLines, "ScriptParserImpl::~ScriptParserImpl"), 2U);
    EXPECT_EQ(countTraces(vLines, "ScriptParserImpl::definition::definition"), 2U);
}

TEST(ScriptGraphTest, EndOfAParserIsTracedByTheLevelAtItsEnd) {
    const auto linesAtTheEnd = [](log4cplus::LogLevel in_LevelBefore,
                                  log4cplus::LogLevel in_LevelAtTheEnd) {
        std::istringstream text("x = 1\n");
        auto pParser = std::make_unique<ScriptParser>();
        {
            const LogCapture log(ParserLogger, in_LevelBefore);
            pParser->initialize(text, "s.xpr", "dir");
            pParser->getExpression();
        }
        const LogCapture log(ParserLogger, in_LevelAtTheEnd);
        pParser.reset();
        return countTraces(log.messages(log4cplus::TRACE_LOG_LEVEL),
                           "ScriptParserImpl::~ScriptParserImpl");
    };
    EXPECT_EQ(linesAtTheEnd(log4cplus::ERROR_LOG_LEVEL, log4cplus::TRACE_LOG_LEVEL), 2U);
    EXPECT_EQ(linesAtTheEnd(log4cplus::TRACE_LOG_LEVEL, log4cplus::ERROR_LOG_LEVEL), 0U);
}

TEST(ScriptGraphTest, NothingOutlivesTheDefinitions) {
    const auto live = [] {
        std::size_t uiBlocks = 0;
        for (const MemAccount& account : MemAccounts::snapshot()) {
            uiBlocks += account.liveBlocks;
        }
        return uiBlocks;
    };
    const AssertionCapture assertions;
    const char* szScript = "inputvar i\nf<p>(x, y) = {x, y[0]} + g<p, \"t\", 1.5>(i)\n"
                           "v = if(f<1>(1, 2), 3, (4)) + if(a, b)\nw = v ^ 2\n";
    { const ParsedScript warmUp(szScript); }
    const std::size_t uiBefore = live();
    { const ParsedScript script(szScript); }
    EXPECT_EQ(live(), uiBefore);
}

} // namespace
