#include "GraphText.h"
#include "RunTest.h"

#include "tools/vxpr/Builtins.h"

#include <fstream>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class GraphCommandTest : public RunTest {
protected:
    /// The graph of a script of that text, drawn without a fault.
    GraphText draw(const std::string& in_strScript, std::vector<std::string> in_vMore = {}) const {
        std::vector<std::string> vArguments{"graph", writeScript(in_strScript)};
        vArguments.insert(vArguments.end(), in_vMore.begin(), in_vMore.end());
        const ProcessResult result = runVxpr(vArguments);
        EXPECT_EQ(result.m_strErrors, "");
        EXPECT_EQ(result.m_iStatus, 0);
        EXPECT_THAT(result.m_strOutput, StartsWith("digraph script {\n"));
        return GraphText(result.m_strOutput);
    }

    /// Definitions that use each other in a chain, in the order of the file or from its end.
    static std::string makeChain(int in_iLength, bool in_bReverse) {
        std::string strScript;
        for (int i = 2; i < in_iLength; ++i) {
            const int iName = in_bReverse ? in_iLength + 1 - i : i;
            const std::string strLine = "x" + std::to_string(iName) + " = x" +
                                        std::to_string(iName - 1) + " + x" +
                                        std::to_string(iName - 2) + "\n";
            strScript += strLine;
        }
        const std::string strBegin = "inputvar frame\nx0 = sum(frame)\nx1 = x0 + 1\n";
        return in_bReverse ? strScript + strBegin : strBegin + strScript;
    }
};

TEST_F(GraphCommandTest, TheStagesShowNamesThenCopiesThenSharedNodes) {
    const std::string strScript = "inputvar frame\na = sum(frame) + 1\nb = sum(frame) + 1\n";
    EXPECT_THAT(draw(strScript, {"--raw"}).getLabels(),
                UnorderedElementsAre("1", "1", "a line 2 | +", "b line 3 | +",
                                     "frame line 1 | input", "frame | by name", "frame | by name",
                                     "sum | by name", "sum | by name"));
    EXPECT_THAT(draw(strScript, {"--linked"}).getLabels(),
                UnorderedElementsAre("1", "a line 2 | +", "b line 3 | +", "frame line 1 | input",
                                     "sum", "sum"));
    const GraphText optimized = draw(strScript, {"--optimized"});
    EXPECT_THAT(optimized.getLabels(), UnorderedElementsAre("1", "a line 2 | b line 3 | +",
                                                            "frame line 1 | input", "sum"));
    EXPECT_EQ(draw(strScript).getLabels(), optimized.getLabels());
}

TEST_F(GraphCommandTest, ArrowsAreNumberedInTheOrderOfTheScript) {
    const GraphText graph = draw("inputvar frame\ns = sum(frame)\na = s - 2\nb = 2 - s\nc = s + s\n"
                                 "d = {a, b, c}\ne = d[0]\nf = if(isGreater(a, b), c, d)\n");
    EXPECT_THAT(graph.getSources("s line 2 | sum"), ElementsAre("=frame line 1 | input"));
    EXPECT_THAT(graph.getSources("a line 3 | -"), ElementsAre("1=s line 2 | sum", "2=2"));
    EXPECT_THAT(graph.getSources("b line 4 | -"), ElementsAre("1=2", "2=s line 2 | sum"));
    EXPECT_THAT(graph.getSources("c line 5 | +"),
                ElementsAre("1=s line 2 | sum", "2=s line 2 | sum"));
    EXPECT_THAT(graph.getSources("d line 6 | { }"),
                ElementsAre("1=a line 3 | -", "2=b line 4 | -", "3=c line 5 | +"));
    EXPECT_THAT(graph.getSources("e line 7 | x[i]"), ElementsAre("x=d line 6 | { }", "i=0"));
    EXPECT_THAT(graph.getSources("f line 8 | if"),
                ElementsAre("if=isGreater", "then=c line 5 | +", "else=d line 6 | { }"));
}

TEST_F(GraphCommandTest, ParametersAndLiteralsAreShownWithTheirValues) {
    const GraphText graph = draw(
        "inputvar frame\na = debounceOnOff<3, 12>(frame)\nb = vad<-50.0, 2>(frame)\n"
        "c = tappedDelay<4, 0, \"1, 2\">(frame)\nd = frame[0..9]\ne = frame[1..3]\nf = 0.25\n");
    EXPECT_THAT(graph.getLabels(),
                UnorderedElementsAre(
                    "frame line 1 | input", "a line 2 | debounceOnOff<3, 12> | memory",
                    "b line 3 | vad<-50.0, 2> | memory",
                    "c line 4 | tappedDelay<4, 0, \"1, 2\"> | memory", "d line 5 | x[i]",
                    "[0, 1, 2, ... 10 values]", "e line 6 | x[i]", "[1, 2, 3]", "f line 7 | 0.25"));
}

TEST_F(GraphCommandTest, InputsLiteralsMemoryAndNamesLookDifferent) {
    const std::string strScript = "inputvar frame\na = delta(frame)\nb = 2\nc = sum(frame)\n";
    const GraphText graph = draw(strScript);
    EXPECT_THAT(graph.getAttributes("frame line 1 | input"), HasSubstr("shape=ellipse"));
    EXPECT_THAT(graph.getAttributes("a line 2 | delta | memory"), HasSubstr("peripheries=2"));
    EXPECT_THAT(graph.getAttributes("b line 3 | 2"), HasSubstr("style=filled"));
    EXPECT_EQ(graph.getAttributes("c line 4 | sum"), "");
    const GraphText raw = draw(strScript, {"--raw"});
    EXPECT_THAT(raw.getAttributes("c line 4 | sum | by name"), HasSubstr("dashed"));
}

TEST_F(GraphCommandTest, CallsOfScriptFunctionsShowTheirBodies) {
    const std::string strScript = "inputvar frame\nsmooth<n>(x) = slidingWindow<n>(x)\n"
                                  "mean(x) = sum(x) / sizeOf(x)\na = mean(smooth<5>(frame))\n";
    const GraphText graph = draw(strScript);
    EXPECT_THAT(graph.getLabels(),
                UnorderedElementsAre("frame line 1 | input",
                                     "value of smooth<n>(x) | slidingWindow<5> | memory", "sum",
                                     "sizeOf", "a line 4 | value of mean(x) | /"));
    // As parsed, a function is a picture of its own.
    const GraphText raw = draw(strScript, {"--raw"});
    EXPECT_THAT(raw.getSources("smooth<n>(x) line 2 | slidingWindow<n> | by name"),
                ElementsAre("=x | argument"));
    EXPECT_THAT(raw.getSources("mean(x) line 3 | /"),
                ElementsAre("1=sum | by name", "2=sizeOf | by name"));
    // And where it is asked for.
    EXPECT_THAT(
        draw(strScript, {"smooth"}).getLabels(),
        UnorderedElementsAre("smooth<n>(x) line 2 | slidingWindow<n> | memory", "x | argument"));
}

TEST_F(GraphCommandTest, FunctionsAreShownWhereThereIsNothingElse) {
    EXPECT_THAT(draw("twice(x) = x * 2\n").getSources("twice(x) line 1 | *"),
                ElementsAre("1=x | argument", "2=2"));
}

TEST_F(GraphCommandTest, AFeatureIsShownWithWhatItReadsAndAllItsNames) {
    const std::string strScript =
        "inputvar frame\na = sum(frame)\nb = max(frame)\nc = a\nd = sum(frame)\ne = a + 1\n";
    const GraphText graph = draw(strScript, {"s.e"});
    EXPECT_THAT(graph.getLabels(),
                UnorderedElementsAre("1", "frame line 1 | input",
                                     "a line 2 | c line 4 | d line 5 | sum", "e line 6 | +"));
    EXPECT_EQ(draw(strScript, {"a", "b"}).getLabels().size(), 3U);
}

TEST_F(GraphCommandTest, DefinitionsOfOtherScriptsBearTheirNames) {
    m_Scratch.write("lib.xpr", "inputvar x\n\nlevel = max(x)\n");
    EXPECT_THAT(draw("a = lib.level + 1\n").getLabels(),
                UnorderedElementsAre("1", "lib.x lib.xpr | input", "lib.level lib.xpr:3 | max",
                                     "a line 1 | +"));
}

TEST_F(GraphCommandTest, ADefinitionThatIsUsedAheadOfItsPlaceHasOneNameOnOneNode) {
    EXPECT_THAT(
        draw("inputvar frame\na = b + 1\nb = sum(frame)\n").getLabels(),
        UnorderedElementsAre("1", "frame line 1 | input", "b line 3 | sum", "a line 2 | +"));
}

TEST_F(GraphCommandTest, TheSameScriptGivesTheSameText) {
    const std::string strScript = std::string(VELMORA_SOURCE_DIR) + "/examples/scripts/peak.xpr";
    for (const char* szStage : {"--raw", "--linked", "--optimized"}) {
        const std::string strFirst = runVxpr({"graph", strScript, szStage}).m_strOutput;
        EXPECT_EQ(runVxpr({"graph", strScript, szStage}).m_strOutput, strFirst) << szStage;
    }
}

TEST_F(GraphCommandTest, FortyDoublingsAreFortyNodes) {
    std::string strScript = "inputvar frame\nx0 = sum(frame)\n";
    for (int i = 1; i <= 40; ++i) {
        const std::string strBefore = "x" + std::to_string(i - 1);
        strScript += "x" + std::to_string(i) + " = " + strBefore + " + " + strBefore + "\n";
    }
    for (const char* szStage : {"--linked", "--optimized"}) {
        const GraphText graph = draw(strScript, {szStage});
        EXPECT_EQ(graph.m_mapLabels.size(), 42U);
        EXPECT_EQ(graph.m_vEdges.size(), 81U);
    }
}

TEST_F(GraphCommandTest, LongChainsInEitherOrderNeedNoDeepStack) {
    for (const bool bReverse : {false, true}) {
        const ProcessResult result = runVxpr(
            {"graph", writeScript(makeChain(bReverse ? 2000 : 5000, bReverse)), "--linked"});
        EXPECT_EQ(result.m_iStatus, 0);
        EXPECT_THAT(result.m_strOutput, HasSubstr("<B>x1999</B>"));
    }
}

TEST_F(GraphCommandTest, NamesThatAreMarkupAreWrittenAsText) {
    m_Scratch.write("a<&>\"\\.xpr", "inputvar frame\na = tappedDelay<2, 0, \"<b>&\">(frame)\n");
    const ProcessResult result = runVxpr({"graph", m_Scratch.getPath("a<&>\"\\.xpr")});
    EXPECT_EQ(result.m_iStatus, 0);
    EXPECT_THAT(result.m_strOutput, HasSubstr("label=<a&lt;&amp;&gt;&quot;\\.xpr (optimized)>"));
    EXPECT_THAT(result.m_strOutput,
                HasSubstr("tappedDelay&lt;2, 0, &quot;&lt;b&gt;&amp;&quot;&gt;"));
    EXPECT_THAT(result.m_strOutput, HasSubstr("tooltip=\"a&lt;&amp;&gt;&quot;\\\\.xpr:2:5\""));
}

TEST_F(GraphCommandTest, TextGoesToAFileThatAppearsWhole) {
    const std::string strScript = writeScript("a = 1\n");
    const std::string strText = runVxpr({"graph", strScript}).m_strOutput;
    for (const char* szName : {"a.dot", "a.gv"}) {
        const ProcessResult result = runVxpr({"graph", strScript, "-o", m_Scratch.getPath(szName)});
        EXPECT_EQ(result.m_iStatus, 0);
        EXPECT_EQ(result.m_strOutput, "");
        EXPECT_EQ(readFile(m_Scratch.getPath(szName)), strText);
    }
    EXPECT_THAT(runVxpr({"graph", "-"}, withInput("a = 1\n")).m_strOutput,
                HasSubstr("label=<stdin.xpr (optimized)>"));
}

TEST_F(GraphCommandTest, FaultsOfTheScriptAreShownAndNothingIsWritten) {
    for (const char* szStage : {"--linked", "--optimized"}) {
        const ProcessResult result = runVxpr(
            {"graph", writeScript("a = sum(fram)\n"), szStage, "-o", m_Scratch.getPath("a.dot")});
        EXPECT_EQ(result.m_iStatus, 1);
        EXPECT_THAT(result.m_strErrors, HasSubstr("s.xpr:1:9: error: `fram` isn't defined here"));
    }
    EXPECT_THAT(m_Scratch.list(), ElementsAre("s.xpr"));
    // A name that leads nowhere is no fault before names are looked up; a missing bracket is.
    EXPECT_THAT(draw("a = sum(fram)\n", {"--raw"}).getLabels(),
                UnorderedElementsAre("a line 1 | sum | by name", "fram | by name"));
    const ProcessResult result = runVxpr({"graph", writeScript("a = (1\n"), "--raw"});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("`)` is missing here"));
    EXPECT_EQ(result.m_strOutput, "");
}

TEST_F(GraphCommandTest, AnUnknownFeatureIsRefusedWithWhatThereIs) {
    const ProcessResult result =
        runVxpr({"graph", writeScript("inputvar frame\nlevel = max(frame)\n"), "levle"});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("the script `s` doesn't define `levle`; it defines frame, level; did you "
                          "mean `level`?"));
    EXPECT_EQ(result.m_strOutput, "");
}

TEST_F(GraphCommandTest, CommandLinesThatCantBeMeantAreRefused) {
    const std::string strScript = writeScript("a = 1\n");
    const ProcessResult ending = runVxpr({"graph", strScript, "-o", m_Scratch.getPath("a.jpg")});
    EXPECT_EQ(ending.m_iStatus, 2);
    EXPECT_THAT(ending.m_strErrors, HasSubstr(".dot or .gv for text, .svg or .png for a picture"));
    EXPECT_EQ(runVxpr({"graph", strScript, "--raw", "--linked"}).m_iStatus, 2);
    EXPECT_EQ(runVxpr({"graph", strScript, "--optimized", "--linked"}).m_iStatus, 2);
    const std::string strSame = m_Scratch.write("b.dot", "a = 1\n");
    const ProcessResult same = runVxpr({"graph", strSame, "-o", strSame});
    EXPECT_EQ(same.m_iStatus, 2);
    EXPECT_THAT(same.m_strErrors, HasSubstr("would replace the script"));
    EXPECT_EQ(readFile(strSame), "a = 1\n");
}

TEST_F(GraphCommandTest, AFileThatCantBeWrittenIsToldWithAWayOut) {
    const ProcessResult result =
        runVxpr({"graph", writeScript("a = 1\n"), "-o", m_Scratch.getPath("missing/a.dot")});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("missing/a.dot': No such file or directory; choose "
                                              "another place with -o"));
}

TEST_F(GraphCommandTest, AnEmptyScriptGivesAnEmptyGraphAndAWarning) {
    const ProcessResult result = runVxpr({"graph", writeScript("// nothing\n")});
    EXPECT_EQ(result.m_iStatus, 0);
    EXPECT_THAT(result.m_strErrors, HasSubstr("defines nothing"));
    EXPECT_THAT(GraphText(result.m_strOutput).getLabels(), IsEmpty());
}

TEST_F(GraphCommandTest, TheFunctionsWithMemoryAreThoseOfTheReference) {
    std::ifstream page(std::string(VELMORA_SOURCE_DIR) + "/docs/built-ins.md");
    std::string strFunction;
    std::size_t uiFound = 0;
    for (std::string strLine; std::getline(page, strLine);) {
        if (strLine.compare(0, 3, "## ") == 0) {
            strFunction = strLine.substr(3);
        } else if (strLine.compare(0, 11, "| Memory | ") == 0) {
            EXPECT_EQ(Builtins::hasMemory(strFunction), strLine != "| Memory | none |")
                << strFunction;
            ++uiFound;
        }
    }
    EXPECT_EQ(uiFound, Builtins::getNames().size());
}

} // namespace Vxpr
