#include <velmora/math/xpr/Dictionnary.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include "support/LogCapture.h"
#include "support/PunctuatedLocale.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {
namespace {

Handle<Expression> makeConstant() {
    DoubleVector vValue;
    vValue.push_back(1.0);
    return Handle<Expression>(new ConstantImpl(vValue));
}

std::string readFile(const std::string& in_strPath) {
    std::ifstream file(in_strPath);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

Handle<OperatorPlus> makeSum(const Handle<Expression>& in_pLeft,
                             const Handle<Expression>& in_pRight) {
    Handle<OperatorPlus> pSum(new OperatorPlus("sum"));
    pSum->getLeftArgument()->setValue(in_pLeft);
    pSum->getRightArgument()->setValue(in_pRight);
    return pSum;
}

/// x + x, and then each sum added to itself: the number of paths doubles with each.
Handle<Expression> makeDoubled(int in_iTimes) {
    Handle<Expression> pSum(new DomainVariableImpl);
    for (int i = 0; i < in_iTimes; ++i) {
        pSum = Handle<Expression>(makeSum(pSum, pSum));
    }
    return pSum;
}

std::size_t count(const std::string& in_strText, const std::string& in_strWhat) {
    std::size_t uiCount = 0;
    for (std::size_t uiFound = in_strText.find(in_strWhat); uiFound != std::string::npos;
         uiFound = in_strText.find(in_strWhat, uiFound + 1)) {
        ++uiCount;
    }
    return uiCount;
}

constexpr const char* SumNode = " [shape=oval]";

TEST(DictionnaryDumpTest, FileHoldsTheFrameTheEntriesAndALegendWithoutParameter) {
    const TempDirectory directory;
    const std::string strPath = directory.write("graph.dot", std::string(10000, 'x'));
    Dictionnary dictionnary("d");
    dictionnary.add(makeConstant(), false);
    std::ostringstream entries;
    entries << dictionnary;

    EXPECT_TRUE(dictionnary.dump(strPath.c_str()));

    EXPECT_EQ(readFile(strPath),
              "strict digraph I {\n"
              "edge [style=solid,color=blue]\n" +
                  entries.str() +
                  "subgraph clusterLegend{\n"
                  "label=\"Legend\"\n"
                  "fontsize=8\n"
                  "color=red\n"
                  "Constant [color=red, fontsize=8, shape=parallelogram]\n"
                  "Variable [color=red, fontsize=8, shape=box]\n"
                  "Variable -> Constant [label=\"Child\",color=blue, fontsize=8]\n"
                  "Constant -> Variable [label=\"Parent\",color=red, style=dashed, fontsize=8]\n"
                  "{rank=same; {Variable Constant}}"
                  "subgraph clusterLegendFunct{\n"
                  "label=\"Function\"\n"
                  "Function [color=red, fontsize=8, shape=oval]\n"
                  "Argument [color=red, fontsize=8, shape=box]\n"
                  "{rank=min; Function}\n"
                  "{rank=max; Argument}\n"
                  "}\n"
                  "}\n"
                  "}\n");
}

TEST(DictionnaryDumpTest, NumbersAreWrittenTheSameUnderEveryLocaleOfTheHost) {
    const TempDirectory directory;
    Dictionnary dictionnary("d");
    // With identifiers of four digits.
    for (int i = 0; i != 1000; ++i) {
        makeConstant();
    }
    dictionnary.add(Handle<Expression>(makeSum(makeConstant(), makeConstant())), false);
    dictionnary.dump(directory.path("graph.dot").c_str());
    const Velmora::Testing::GlobalPunctuation punctuation;
    dictionnary.dump(directory.path("other.dot").c_str());

    EXPECT_EQ(readFile(directory.path("other.dot")), readFile(directory.path("graph.dot")));
}

TEST(DictionnaryDumpTest, UnwritablePathGivesTrueAndNoFile) {
    const TempDirectory directory;
    const std::string strPath = directory.path("missing/graph.dot");

    EXPECT_TRUE(Dictionnary("d").dump(strPath.c_str()));

    EXPECT_FALSE(std::filesystem::exists(strPath));
}

TEST(DictionnaryDumpTest, TracesOnTheClassLoggerUnderTheLabelOfExpressions) {
    const TempDirectory directory;
    const Dictionnary dictionnary("d");
    const LogCapture log("quillmark.math.xpr.Dictionnary", log4cplus::TRACE_LOG_LEVEL);

    dictionnary.dump(directory.path("graph.dot").c_str());

    ASSERT_FALSE(log.lines().empty());
    EXPECT_EQ(log.lines().front().logger, "quillmark.math.xpr.Dictionnary");
    EXPECT_EQ(log.count(log4cplus::TRACE_LOG_LEVEL, "ExpressionBaseImpl::dump"), 2U);
}

TEST(DictionnaryDumpTest, NodeOfADictionaryWithFewPathsIsWrittenOnceAPath) {
    Dictionnary dictionnary("d");
    dictionnary.add(makeDoubled(4), false);
    std::ostringstream out;

    out << dictionnary;

    EXPECT_EQ(count(out.str(), SumNode), 1U + 2U + 4U + 8U);
}

TEST(DictionnaryDumpTest, NodeOfADictionaryWithTooManyPathsIsWrittenOnce) {
    Dictionnary dictionnary("d");
    Handle<Expression> pSum = makeDoubled(59);
    Handle<OperatorPlus>(pSum)->setName("below");
    dictionnary.add(pSum, false);
    dictionnary.add(Handle<Expression>(makeSum(pSum, pSum)), false);
    std::ostringstream out;

    out << dictionnary;

    EXPECT_EQ(count(out.str(), SumNode), 60U);
}

TEST(DictionnaryDumpTest, LaterDumpWritesEverythingAgain) {
    Dictionnary dictionnary("d");
    dictionnary.add(makeDoubled(60), false);
    std::ostringstream first;
    std::ostringstream second;

    first << dictionnary;
    second << dictionnary;

    EXPECT_EQ(first.str(), second.str());
}

TEST(DictionnaryDumpTest, DepthOfTheGraphIsNoLimit) {
    Handle<Expression> pSum(new DomainVariableImpl);
    const Handle<Expression> pOne(new DomainVariableImpl);
    for (int i = 0; i < 40000; ++i) {
        pSum = Handle<Expression>(makeSum(pSum, pOne));
    }
    Dictionnary dictionnary("d");
    dictionnary.add(pSum, false);
    std::ostream nowhere(nullptr);

    dictionnary.write(nowhere);

    EXPECT_EQ(dictionnary.size(), 1U);
}

} // namespace
} // namespace Velmora::Math::Xpr
