#include <velmora/math/xpr/Dictionnary.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

#include <velmora/math/xpr/ConstantImpl.h>

#include "support/LogCapture.h"
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

} // namespace
} // namespace Velmora::Math::Xpr
