#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "support/GraphTest.h"
#include "support/PunctuatedLocale.h"
#include "support/RecordingNode.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

const char* const Head = "strict digraph I {\n"
                         "edge [style=solid,color=blue]\n";

const char* const Legend =
    "subgraph clusterLegend{\n"
    "label=\"Legend\"\n"
    "fontsize=8\n"
    "color=red\n"
    "Constant [color=red, fontsize=8, shape=parallelogram]\n"
    "Variable [color=red, fontsize=8, shape=box]\n"
    "Variable -> Constant [label=\"Child\",color=blue, fontsize=8]\n"
    "Constant -> Variable [label=\"Parent\",color=red, style=dashed, fontsize=8]\n"
    "{rank=same; {Variable Constant}}subgraph clusterLegendFunct{\n"
    "label=\"Function\"\n"
    "Function [color=red, fontsize=8, shape=oval]\n"
    "Parameter [color=red, fontsize=8, shape=note]\n"
    "Argument [color=red, fontsize=8, shape=box]\n"
    "{rank=min; Function}\n"
    "{rank=max; Argument}\n"
    "}\n"
    "}\n"
    "}\n";

template <class Node>
std::string id(const Node& in_Node) {
    return std::to_string(in_Node.getId());
}

std::size_t countOf(const std::string& in_strText, const std::string& in_strPart) {
    std::size_t uiCount = 0;
    for (std::size_t ui = in_strText.find(in_strPart); ui != std::string::npos;
         ui = in_strText.find(in_strPart, ui + 1)) {
        ++uiCount;
    }
    return uiCount;
}

class GraphDumpTest : public GraphTest {
protected:
    /// The text that a dump writes.
    std::string dumped(const Expression& in_Expression) const {
        const std::string strFile = m_Directory.path("graph.dot");
        EXPECT_TRUE(in_Expression.dump(strFile.c_str()));
        std::ifstream file(strFile, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    static Handle<VariableImpl> variable(const char* in_szName) {
        Handle<VariableImpl> pVariable(new VariableImpl);
        pVariable->setName(in_szName);
        return pVariable;
    }

    template <class T>
    static void bind(VariableImpl& inout_Variable, const Handle<T>& in_pValue) {
        Variable& variable = inout_Variable;
        variable.setValue(Handle<Expression>(in_pValue));
    }

    static std::string constantText(const ConstantImpl& in_Constant, const std::string& in_strDot,
                                    const std::string& in_strElements) {
        return in_strDot + "_" + id(in_Constant) + " [shape=parallelogram label=\"Constant_" +
               id(in_Constant) + "\\n{" + in_strElements + "}\"]\n";
    }

    TempDirectory m_Directory;
};

TEST_F(GraphDumpTest, DotNameIsTheNameAndTheIdentifier) {
    const struct {
        const char* m_szName;
        const char* m_szDotName;
    } cases[] = {{"abc", "abc"}, {"Left&42", "Left_42"}, {"9lives", "_9lives"}, {"_x", "__x"},
                 {"", "_"},      {"a.b-c d", "a_b_c_d"}, {"\xc3\xa9t", "___t"}, {"Z9z", "Z9z"},
                 {"A0a", "A0a"}, {"a@[`{", "a____"},     {"@", "__"},           {"[", "__"},
                 {"a/:", "a__"}};
    for (const auto& testCase : cases) {
        const auto pVariable = variable(testCase.m_szName);
        EXPECT_EQ(pVariable->getDotName(), testCase.m_szDotName + ("_" + id(*pVariable)));
        ParameterImpl parameter;
        parameter.setName(testCase.m_szName);
        EXPECT_EQ(parameter.getDotName(), testCase.m_szDotName + ("_" + id(parameter)));
    }
}

TEST_F(GraphDumpTest, DotNameOfAConstantIsMadeOfItsGeneratedName) {
    const auto pConstant = constant({1.5, -2.0});
    EXPECT_EQ(pConstant->getDotName(), "Constant__1_5__2__" + id(*pConstant));
}

TEST_F(GraphDumpTest, FileOfALoneConstantHoldsTheFrameAndOneStatement) {
    const auto pConstant = constant({1.0});
    EXPECT_EQ(dumped(*pConstant), Head + constantText(*pConstant, "Constant__1_", "1") + Legend);
}

TEST_F(GraphDumpTest, DumpOverwritesWhatWasThere) {
    m_Directory.write("graph.dot", std::string(10000, 'x'));
    EXPECT_EQ(dumped(*Handle<RecordingNode>(new RecordingNode)), std::string(Head) + Legend);
}

TEST_F(GraphDumpTest, DumpIntoAMissingDirectoryIsTrueAndWritesNothing) {
    const std::string strFile = m_Directory.path("missing/graph.dot");
    EXPECT_TRUE(constant({1.0})->dump(strFile.c_str()));
    EXPECT_FALSE(std::filesystem::exists(m_Directory.path("missing")));
}

TEST_F(GraphDumpTest, FileThatCanNotBeOpenedReadsNothingOfTheGraph) {
    EXPECT_TRUE(constant({})->dump(m_Directory.path("missing/graph.dot").c_str()));
}

TEST_F(GraphDumpTest, ConstantShowsAtMostTwoElementsInTheFormatOfTheStream) {
    const auto pOne = constant({0.1});
    const auto pTwo = constant({1.0, 1234567.0});
    const auto pThree = constant({1.0, 2.0, 3.0});
    EXPECT_EQ(textOf(*pOne), constantText(*pOne, "Constant__0_1_", "0.1"));
    EXPECT_EQ(textOf(*pTwo), constantText(*pTwo, "Constant__1_1234567_", "1 1.23457e+06"));
    EXPECT_EQ(textOf(*pThree), constantText(*pThree, "Constant__1_2_3_", "1 2 ..."));
}

TEST_F(GraphDumpTest, DomainValueIsWrittenLikeAConstantUnderItsOwnWord) {
    const DoubleVector vValue{4.0, 5.0, 6.0};
    const Handle<DomainValueNoCopyImpl> pValue(new DomainValueNoCopyImpl(vValue));
    EXPECT_EQ(textOf(*pValue), "DomainValue__4_5_6__" + id(*pValue) +
                                   " [shape=parallelogram label=\"DomainValue_" + id(*pValue) +
                                   "\\n{4 5 ...}\"]\n");
}

TEST_F(GraphDumpTest, EmptyVectorEndsTheDumpWithAnException) {
    const auto pConstant = constant({});
    const Handle<DomainValueNoCopyImpl> pValue(new DomainValueNoCopyImpl(pConstant->getValue()));
    const std::string strFile = m_Directory.path("graph.dot");
    for (const Handle<Expression>& pExpression :
         {Handle<Expression>(pConstant), Handle<Expression>(pValue)}) {
        try {
            pExpression->dump(strFile.c_str());
            ADD_FAILURE() << "no exception";
        } catch (const std::out_of_range& exception) {
            EXPECT_STREQ(exception.what(), "vector");
        }
    }
}

TEST_F(GraphDumpTest, VariableWithoutAValueIsABox) {
    const auto pVariable = variable("x");
    EXPECT_EQ(textOf(*pVariable), "x_" + id(*pVariable) + " [shape=box]\n");
}

TEST_F(GraphDumpTest, VariablePointsAtItsValue) {
    const auto pConstant = constant({1.0});
    const std::string strConstant = "Constant__1__" + id(*pConstant);
    const Handle<VariableImpl> vVariables[] = {variable("x"),
                                               Handle<VariableImpl>(new DomainVariableImpl)};
    for (const auto& pVariable : vVariables) {
        pVariable->setName("x");
        bind(*pVariable, pConstant);
        EXPECT_EQ(textOf(*pVariable), "x_" + id(*pVariable) + " [shape=box]\n" + "x_" +
                                          id(*pVariable) + " -> { " + strConstant + " }\n" +
                                          textOf(*pConstant));
    }
}

TEST_F(GraphDumpTest, FunctionIsAClusterOfItsParametersAndArguments) {
    const Handle<RecordingFunction> pFunction(new RecordingFunction("f"));
    for (const char* szName : {"p", "q"}) {
        pFunction->addParameter(szName);
    }
    for (const char* szName : {"a", "b"}) {
        pFunction->addArgument(szName);
    }
    const std::string strId = id(*pFunction);
    const ParameterImpl& p = *Handle<ParameterImpl>(pFunction->getParameter("p"));
    const ParameterImpl& q = *Handle<ParameterImpl>(pFunction->getParameter("q"));
    const VariableImpl& a = *Handle<VariableImpl>(pFunction->getArgument("a"));
    const VariableImpl& b = *Handle<VariableImpl>(pFunction->getArgument("b"));
    const std::string strA = "a_" + strId + "_" + id(a);
    const std::string strB = "b_" + strId + "_" + id(b);
    EXPECT_EQ(textOf(*pFunction), "subgraph cluster" + strId + "{\n" + "f_" + strId +
                                      " [shape=oval]\n" + "{rank=same; p_" + id(p) + " q_" + id(q) +
                                      " }\n" + "{rank=same; " + strA + " " + strB + " }\n" + "}\n" +
                                      strA + " [shape=box]\n" + strB + " [shape=box]\n" +
                                      textOf(p) + textOf(q));
}

TEST_F(GraphDumpTest, FunctionWithoutAnythingIsAnEmptyCluster) {
    const Handle<RecordingFunction> pFunction(new RecordingFunction("f"));
    const std::string strId = id(*pFunction);
    EXPECT_EQ(textOf(*pFunction), "subgraph cluster" + strId + "{\nf_" + strId +
                                      " [shape=oval]\n{rank=same; }\n{rank=same; }\n}\n");
}

TEST_F(GraphDumpTest, MissingArgumentIsLeftOutOfTheClusterAndWrittenAsNull) {
    const Handle<RecordingFunction> pFunction(new RecordingFunction("f"));
    const auto pAbove = variable("above");
    bind(*pAbove, pFunction);
    pFunction->addArgument("a", pAbove);
    EXPECT_EQ(takeAssertions().size(), 1u);
    const std::string strId = id(*pFunction);
    EXPECT_EQ(textOf(*pFunction), "subgraph cluster" + strId + "{\nf_" + strId +
                                      " [shape=oval]\n{rank=same; }\n{rank=same; }\n}\nnull");
}

TEST_F(GraphDumpTest, OperatorIsWrittenAsAFunction) {
    const Handle<OperatorPlus> pSum(new OperatorPlus);
    const std::string strId = id(*pSum);
    const std::string strLeft =
        "Left_" + strId + "_" + id(*Handle<VariableImpl>(pSum->getLeftArgument()));
    const std::string strRight =
        "Right_" + strId + "_" + id(*Handle<VariableImpl>(pSum->getRightArgument()));
    EXPECT_EQ(textOf(*pSum), "subgraph cluster" + strId + "{\nadd_" + strId +
                                 " [shape=oval]\n{rank=same; }\n{rank=same; " + strLeft + " " +
                                 strRight + " }\n}\n" + strLeft + " [shape=box]\n" + strRight +
                                 " [shape=box]\n");
}

TEST_F(GraphDumpTest, ScriptFunctionPointsAtItsBody) {
    const Handle<ScriptFunctionImpl> pFunction(new ScriptFunctionImpl("f"));
    const std::string strWithoutBody = textOf(*pFunction);
    const auto pConstant = constant({1.0});
    pFunction->setImplementation(Handle<Expression>(pConstant));
    EXPECT_EQ(textOf(*pFunction), strWithoutBody + "f_" + id(*pFunction) + " -> { Constant__1__" +
                                      id(*pConstant) + " }\n" + textOf(*pConstant));
}

TEST_F(GraphDumpTest, ParameterWithoutADirectValueHasNoLabel) {
    ParameterImpl parameter;
    parameter.setName("size");
    EXPECT_EQ(textOf(parameter), "size_" + id(parameter) + " [shape=note]\n" +
                                     "edge [style=invis,color=green]\n" +
                                     "edge [style=solid,color=blue]\n");
}

TEST_F(GraphDumpTest, ParameterWithADirectValueShowsIt) {
    ParameterImpl parameter;
    parameter.setName("size");
    const std::string strDot = "size_" + id(parameter);
    const struct {
        ParameterValue m_Value;
        const char* m_szText;
    } cases[] = {{ParameterValue(3), "3"},
                 {ParameterValue(0.5f), "0.5"},
                 {ParameterValue("hann"), "hann"},
                 {ParameterValue(""), ""}};
    for (const auto& testCase : cases) {
        parameter.setValue(testCase.m_Value);
        EXPECT_EQ(textOf(parameter),
                  strDot + " [shape=note label=\"" + strDot + " \\n" + testCase.m_szText + "\"]\n" +
                      "edge [style=invis,color=green]\n" + "edge [style=solid,color=blue]\n");
    }
}

TEST_F(GraphDumpTest, LinkedParametersPointAtEachOther) {
    const Handle<RecordingFunction> pFunction(new RecordingFunction("f"));
    for (const char* szName : {"top", "other", "middle", "leaf"}) {
        pFunction->addParameter(szName);
    }
    const auto parameter = [&](const char* in_szName) {
        return Handle<ParameterImpl>(pFunction->getParameter(in_szName));
    };
    const auto dot = [&](const char* in_szName) {
        return in_szName + ("_" + id(*parameter(in_szName)));
    };
    const auto link = [&](const char* in_szName, const char* in_szTo) {
        pFunction->getParameter(in_szName)->setValue(pFunction->getParameter(in_szTo));
    };
    link("top", "middle");
    link("other", "middle");
    link("middle", "leaf");
    EXPECT_EQ(textOf(*parameter("middle")),
              dot("middle") + " [shape=note]\n" + "edge [style=invis,color=green]\n" +
                  dot("middle") + " -> {" + dot("top") + " }\n" + dot("middle") + " -> {" +
                  dot("other") + " }\n" + "edge [style=solid,color=green]\n" + dot("middle") +
                  " -> {" + dot("leaf") + " }\n" + "edge [style=solid,color=blue]\n");
}

TEST_F(GraphDumpTest, ParameterWithAValueAndALinkShowsTheValueInForce) {
    const Handle<RecordingFunction> pFunction(new RecordingFunction("f"));
    pFunction->addParameter("p");
    pFunction->addParameter("leaf");
    pFunction->getParameter("p")->setValue(ParameterValue(1));
    pFunction->getParameter("leaf")->setValue(ParameterValue(2));
    pFunction->getParameter("p")->setValue(pFunction->getParameter("leaf"));
    EXPECT_NE(textOf(*pFunction->getParameter("p")).find(" \\n2\"]"), std::string::npos);
}

TEST_F(GraphDumpTest, NodeUnderTwoParentsIsWrittenOncePerPath) {
    const Handle<OperatorPlus> pSum(new OperatorPlus);
    const auto pConstant = constant({1.0});
    pSum->getLeftArgument()->setValue(Handle<Expression>(pConstant));
    pSum->getRightArgument()->setValue(Handle<Expression>(pConstant));
    EXPECT_EQ(countOf(dumped(*pSum), textOf(*pConstant)), 2u);
}

TEST_F(GraphDumpTest, DumpIsDrawnWithANodeThatIsWrittenTwice) {
    const auto pVariable = variable("x");
    bind(*pVariable, constant({1.0}));
    const Handle<OperatorPlus> pSum(new OperatorPlus);
    pSum->getLeftArgument()->setValue(Handle<Expression>(pVariable));
    pSum->getRightArgument()->setValue(Handle<Expression>(pVariable));
    const std::string strFile = m_Directory.path("graph.dot");
    const std::string strText = dumped(*pSum);
    EXPECT_EQ(countOf(strText, textOf(*pVariable)), 2u);
    EXPECT_EQ(countOf(strText, "{"), countOf(strText, "}"));
    if (std::system("command -v dot >/dev/null") == 0) {
        const std::string strDraw = "dot -Tsvg -o '" + strFile + ".svg' '" + strFile + "' 2>&1";
        EXPECT_EQ(std::system(strDraw.c_str()), 0);
        std::ifstream picture(strFile + ".svg");
        const std::string strPicture(std::istreambuf_iterator<char>(picture), {});
        EXPECT_EQ(
            countOf(strPicture, std::string("<title>") + pVariable->getDotName() + "</title>"), 1u);
    }
}

TEST_F(GraphDumpTest, GraphOfTooManyPathsIsWrittenOncePerNodeWithTheSameEdges) {
    constexpr int Doublings = 40;
    std::vector<Handle<VariableImpl>> vVariables{variable("x0")};
    const auto pConstant = constant({1.0});
    bind(*vVariables.back(), pConstant);
    for (int i = 1; i <= Doublings; ++i) {
        const Handle<OperatorPlus> pSum(new OperatorPlus);
        pSum->getLeftArgument()->setValue(Handle<Expression>(vVariables.back()));
        pSum->getRightArgument()->setValue(Handle<Expression>(vVariables.back()));
        vVariables.push_back(variable(("x" + std::to_string(i)).c_str()));
        bind(*vVariables.back(), pSum);
    }
    const std::string strText = dumped(*vVariables.back());
    EXPECT_EQ(strText.compare(0, std::string(Head).size(), Head), 0);
    EXPECT_EQ(strText.substr(strText.size() - std::string(Legend).size()), Legend);
    EXPECT_EQ(countOf(strText, textOf(*pConstant)), 1u);
    EXPECT_EQ(countOf(strText, "subgraph cluster"), Doublings + 2u);
    for (int i = 1; i <= Doublings; ++i) {
        const std::string strBelow = vVariables[static_cast<std::size_t>(i) - 1]->getDotName();
        EXPECT_EQ(countOf(strText, " -> { " + strBelow + " }\n"), 2u);
        EXPECT_EQ(countOf(strText, "\n" + strBelow + " [shape=box]\n"), 1u);
    }
    // Outside a dump each node still writes what stands below it.
    EXPECT_EQ(countOf(textOf(*vVariables[2]), textOf(*pConstant)), 4u);
}

TEST_F(GraphDumpTest, NumbersAreWrittenTheSameUnderEveryLocaleOfTheHost) {
    // With identifiers of four digits.
    for (int i = 0; i != 1000; ++i) {
        variable("");
    }
    const Handle<OperatorPlus> pSum(new OperatorPlus);
    pSum->getLeftArgument()->setValue(Handle<Expression>(constant({1234567.0, 0.5})));
    const std::string strText = dumped(*pSum);
    EXPECT_NE(strText.find("subgraph cluster" + id(*pSum) + "{\n"), std::string::npos);
    const GlobalPunctuation punctuation;
    EXPECT_EQ(dumped(*pSum), strText);
}

} // namespace

} // namespace Velmora::Math::Xpr
