#include "RunTest.h"

#include <sndfile.h>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class RunCommandTest : public RunTest {};

TEST_F(RunCommandTest, WithoutFeaturesEverythingWithAValueIsEvaluatedInTheOrderOfTheScript) {
    const ProcessResult result =
        runOverTable("inputvar x\nb = x + 1\nf(y, z) = y + z\n"
                     "a = f(x, b)\ntwo() = 2\ng<n>(y) = slidingWindow<n>(y)\n",
                     "1\n2\n");
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_strOutput, "time,b,a,two\n0,2,3,2\n1,3,5,2\n");
    EXPECT_EQ(result.m_iStatus, 0);
}

TEST_F(RunCommandTest, FeaturesAreEvaluatedInTheOrderOfTheCommandLineEachOnce) {
    EXPECT_EQ(
        runOverTable("inputvar x\na = x\nb = x * 2\n", "1\n", {"b", "s.a", "s.b"}).m_strOutput,
        "time,b,a\n0,2,1\n");
}

TEST_F(RunCommandTest, AnInputCanBeAskedFor) {
    EXPECT_EQ(runOverTable("inputvar x\na = x\n", "1,2\n", {"x"}).m_strOutput,
              "time,x[0],x[1]\n0,1,2\n");
}

TEST_F(RunCommandTest, AFeatureCalledTimeKeepsTheNameOfTheScript) {
    EXPECT_EQ(runOverTable("inputvar x\ntime = x\n", "7\n").m_strOutput, "time,s.time\n0,7\n");
}

TEST_F(RunCommandTest, ColumnsAreNamedByPlainWordsWhateverTheFileIsCalled) {
    const ProcessResult result =
        runVxpr({"run", m_Scratch.write("a,\"b.xpr", "inputvar x\ntime = x\n"), "--input",
                 "x=" + m_Scratch.write("x.csv", "7\n")});
    EXPECT_EQ(result.m_strOutput, "time,a__b.time\n0,7\n");
}

TEST_F(RunCommandTest, AnUnknownFeatureIsNamedWithWhatThereIs) {
    const ProcessResult result =
        runOverTable("inputvar x\nlevel = x\npeak = x\n", "1\n", {"levle"});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("doesn't define `levle`; it defines x, level, peak; "
                                              "did you mean `level`?"));
    EXPECT_EQ(result.m_strOutput, "");
}

TEST_F(RunCommandTest, AFunctionOfArgumentsIsNoFeature) {
    const ProcessResult result =
        runOverTable("inputvar x\nf<n>(y) = slidingWindow<n>(y)\n", "1\n", {"f"});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("such as my_f = f<...>(...)"));
}

TEST_F(RunCommandTest, FramesGetTheSamplesAndTheTimeOfTheirStart) {
    const ProcessResult result = runVxpr({"run", writeScript("inputvar frame\n"), "frame", "-i",
                                          writeRamp(10), "--frame", "4", "--hop", "2"});
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_strOutput, "time,frame[0],frame[1],frame[2],frame[3]\n"
                                  "0,0,0.0009765625,0.001953125,0.0029296875\n"
                                  "0.00025,0.001953125,0.0029296875,0.00390625,0.0048828125\n"
                                  "5e-04,0.00390625,0.0048828125,0.005859375,0.0068359375\n"
                                  "0.00075,0.005859375,0.0068359375,0.0078125,0.0087890625\n");
}

TEST_F(RunCommandTest, FramesAreTwentyMillisecondsWithoutOtherWish) {
    EXPECT_EQ(
        runVxpr({"run", writeScript("inputvar frame\nn = sizeOf(frame)\n"), "-i", writeRamp(500)})
            .m_strOutput,
        "time,n\n0,160\n0.02,160\n0.04,160\n");
}

TEST_F(RunCommandTest, TheLastFrameIsPaddedOnDemand) {
    EXPECT_EQ(runVxpr({"run", writeScript("inputvar frame\n"), "frame", "-i", writeRamp(3),
                       "--frame", "2", "--pad"})
                  .m_strOutput,
              "time,frame[0],frame[1]\n0,0,0.0009765625\n0.00025,0.001953125,0\n");
}

TEST_F(RunCommandTest, ChannelsAreMixedOrChosen) {
    const std::string strPath = m_Scratch.getPath("stereo.wav");
    writeWave(strPath, {0.5, 0.25, 0.5, 0.25}, {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 8000, 2});
    const std::string strScript = writeScript("inputvar frame\na = max(frame)\n");
    const std::vector<std::string> vArguments{"run", strScript, "-i", strPath, "--frame", "2"};
    EXPECT_EQ(runVxpr(vArguments).m_strOutput, "time,a\n0,0.375\n");
    std::vector<std::string> vSecond = vArguments;
    vSecond.insert(vSecond.end(), {"--channel", "2"});
    EXPECT_EQ(runVxpr(vSecond).m_strOutput, "time,a\n0,0.25\n");
    std::vector<std::string> vThird = vArguments;
    vThird.insert(vThird.end(), {"--channel", "3"});
    EXPECT_EQ(runVxpr(vThird).m_iStatus, 1);
}

TEST_F(RunCommandTest, ARecordingIsResampledToTheRateThatTheScriptExpects) {
    const std::string strPath = m_Scratch.getPath("fast.wav");
    writeWave(strPath, makeTone(1000.0, 0.5, 44100, 44100),
              {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 1});
    const ProcessResult result =
        runVxpr({"run",
                 writeScript("inputvar frame\ninputvar spectrum\nn = sizeOf(frame)\n"
                             "bin = indexOfMax(spectrum)\n"),
                 "-i", strPath, "--rate", "8000", "--frame", "100ms"});
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_THAT(result.m_strOutput, StartsWith("time,n,bin\n0,800,100\n0.1,800,100\n"));
}

TEST_F(RunCommandTest, TheSpectrumOfAToneShowsHalfItsSquaredAmplitude) {
    const std::string strPath = m_Scratch.getPath("tone.wav");
    writeWave(strPath, makeTone(1000.0, 0.5, 8000, 160), {SF_FORMAT_WAV | SF_FORMAT_DOUBLE});
    const ProcessResult result =
        runVxpr({"run",
                 writeScript("inputvar spectrum\nn = sizeOf(spectrum)\np = max(spectrum)\n"
                             "bin = indexOfMax(spectrum)\nclose = isGreater(p, 0.1249999) * "
                             "isGreater(0.1250001, p)\n"),
                 "n", "bin", "close", "-i", strPath});
    EXPECT_EQ(result.m_strOutput, "time,n,bin,close\n0,81,20,1\n");
}

TEST_F(RunCommandTest, TablesOfSeveralInputsMakeUpTheFrames) {
    const std::string strScript = writeScript("inputvar x\ninputvar y\na = sum(x) + y\n");
    EXPECT_EQ(runVxpr({"run", strScript, "--input", "x=" + m_Scratch.write("x.csv", "1,2\n3,4\n"),
                       "--input", "y=" + m_Scratch.write("y.csv", "10\n20\n")})
                  .m_strOutput,
              "time,a\n0,13\n0.02,27\n");
}

TEST_F(RunCommandTest, TablesThatDisagreeAboutTheirEndAreRefused) {
    const std::string strScript = writeScript("inputvar x\ninputvar y\na = x + y\n");
    const ProcessResult result =
        runVxpr({"run", strScript, "--input", "x=" + m_Scratch.write("x.csv", "1\n"), "--input",
                 "y=" + m_Scratch.write("y.csv", "10\n20\n"), "-o", m_Scratch.getPath("o.csv")});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("x.csv' ends after 1 rows, but '"));
    EXPECT_THAT(m_Scratch.list(), Not(testing::Contains("o.csv")));
}

TEST_F(RunCommandTest, ATableThatNoFeatureReadsMakesUpFrames) {
    EXPECT_EQ(runOverTable("inputvar x\na = 1\n", "5\n6\n").m_strOutput, "time,a\n0,1\n1,1\n");
}

TEST_F(RunCommandTest, ATableThatNoFeatureReadsMustBeThere) {
    const ProcessResult result =
        runVxpr({"run", writeScript("inputvar frame\ninputvar x\na = max(frame)\n"), "-i",
                 writeRamp(160), "--input", "x=" + m_Scratch.getPath("no.csv")});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("check the path after --input"));
}

TEST_F(RunCommandTest, ATableForAnInputOfAnotherScriptIsTaken) {
    m_Scratch.write("other.xpr", "inputvar pitch\nlow = pitch - 1\n");
    EXPECT_EQ(runVxpr({"run", writeScript("a = other.low\n"), "--input",
                       "pitch=" + m_Scratch.write("p.csv", "3\n")})
                  .m_strOutput,
              "time,a\n0,2\n");
}

TEST_F(RunCommandTest, ATableForNothingIsRefusedAlsoWithoutInputs) {
    const ProcessResult result = runOverTable("a = 1\n", "5\n");
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("the script declares no input"));
}

TEST_F(RunCommandTest, ATableThatEndsAheadOfTheRecordingIsRefused) {
    const ProcessResult result =
        runVxpr({"run", writeScript("inputvar frame\ninputvar x\na = x + max(frame)\n"), "-i",
                 writeRamp(480), "--input", "x=" + m_Scratch.write("x.csv", "1\n2\n")});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("ends after 2 rows, but the recording goes on at 0.04 s"));
}

TEST_F(RunCommandTest, RowsBeyondTheRecordingAreWarnedOf) {
    const ProcessResult result =
        runVxpr({"run", writeScript("inputvar frame\ninputvar x\na = x + sizeOf(frame)\n"), "-i",
                 writeRamp(160), "--input", "x=" + m_Scratch.write("x.csv", "1\n2\n")});
    EXPECT_EQ(result.m_iStatus, 0);
    EXPECT_THAT(result.m_strErrors, HasSubstr("warning: "));
    EXPECT_THAT(result.m_strErrors, HasSubstr("has more rows than the recording has frames, 1"));
    EXPECT_EQ(result.m_strOutput, "time,a\n0,161\n");
}

TEST_F(RunCommandTest, ATableOfItsOwnCanBeReadBack) {
    const std::string strFirst = m_Scratch.getPath("first.csv");
    EXPECT_EQ(
        runOverTable("inputvar x\nsame = x\nother = x * 2\n", "0.1,0.7\n1e-9,3\n", {"-o", strFirst})
            .m_iStatus,
        0);
    EXPECT_EQ(runVxpr({"run", m_Scratch.write("t.xpr", "inputvar same\na = same\n"), "--input",
                       "same=" + strFirst})
                  .m_strOutput,
              "time,a[0],a[1]\n0,0.1,0.7\n0.02,1e-09,3\n");
}

TEST_F(RunCommandTest, AnInputThatNothingFeedsIsNamedWithItsLine) {
    const ProcessResult result = runVxpr(
        {"run", writeScript("inputvar frame\n\n  inputvar pitch\na = pitch\nb = frame[0]\n"), "-i",
         writeRamp(160)});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("s.xpr:3:12: error: nothing feeds the input `pitch`"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("--input pitch=FILE"));
    EXPECT_EQ(result.m_strOutput, "");
}

TEST_F(RunCommandTest, AnInputThatNoFeatureReadsNeedsNoTable) {
    EXPECT_EQ(runVxpr({"run",
                       writeScript("inputvar frame\ninputvar pitch\na = pitch\n"
                                   "b = sizeOf(frame)\n"),
                       "b", "-i", writeRamp(160)})
                  .m_strOutput,
              "time,b\n0,160\n");
}

TEST_F(RunCommandTest, TheInputsOfOtherScriptsAreFedToo) {
    m_Scratch.write("library/lib.xpr", "inputvar frame\nsize = sizeOf(frame)\n");
    const ProcessResult result =
        runVxpr({"run", writeScript("inputvar frame\nn = lib.size + sizeOf(frame)\n"), "-i",
                 writeRamp(160), "-I", m_Scratch.getPath("library")});
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_strOutput, "time,n\n0,320\n");
}

TEST_F(RunCommandTest, OtherScriptsAreSearchedBesideTheScriptFirst) {
    m_Scratch.write("library/lib.xpr", "x = 1\n");
    m_Scratch.write("lib.xpr", "x = 2\n");
    EXPECT_EQ(runVxpr({"run", writeScript("inputvar frame\na = lib.x\n"), "-i", writeRamp(160),
                       "-I", m_Scratch.getPath("library")})
                  .m_strOutput,
              "time,a\n0,2\n");
}

TEST_F(RunCommandTest, AScriptComesThroughTheStandardInput) {
    m_Scratch.write("lib.xpr", "x = 2\n");
    ProcessOptions options = withInput("inputvar frame\na = lib.x\nb = stdin.a\n");
    options.m_strDirectory = m_Scratch.getPath();
    const ProcessResult result =
        runVxpr({"run", "-", "a", "stdin.b", "-i", writeRamp(160)}, options);
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_strOutput, "time,a,b\n0,2,2\n");
}

TEST_F(RunCommandTest, AScriptNeedsNoParticularEnding) {
    m_Scratch.write("script.txt", "inputvar frame\na = 1\nb = script.a\n");
    EXPECT_EQ(runVxpr({"run", m_Scratch.getPath("script.txt"), "-i", writeRamp(160)}).m_strOutput,
              "time,a,b\n0,1,1\n");
}

TEST_F(RunCommandTest, TheFormFollowsTheEndingOrTheWish) {
    const std::string strScript = "inputvar x\na = x\n";
    EXPECT_EQ(runOverTable(strScript, "1\n", {"--format", "jsonl"}).m_strOutput,
              "{\"time\":0,\"a\":1}\n");
    for (const char* szName : {"o.jsonl", "o.ndjson"}) {
        runOverTable(strScript, "1\n", {"-o", m_Scratch.getPath(szName)});
        EXPECT_EQ(readFile(m_Scratch.getPath(szName)), "{\"time\":0,\"a\":1}\n");
    }
    runOverTable(strScript, "1\n", {"-o", m_Scratch.getPath("o.npy")});
    EXPECT_THAT(readFile(m_Scratch.getPath("o.npy")), StartsWith("\x93NUMPY"));
    runOverTable(strScript, "1\n", {"-o", m_Scratch.getPath("o.NPY")});
    EXPECT_THAT(readFile(m_Scratch.getPath("o.NPY")), StartsWith("\x93NUMPY"));
    runOverTable(strScript, "1\n", {"-o", m_Scratch.getPath("p.npy"), "--format", "csv"});
    EXPECT_EQ(readFile(m_Scratch.getPath("p.npy")), "time,a\n0,1\n");
}

TEST_F(RunCommandTest, AnNpyFileCantGoThroughAPipe) {
    const ProcessResult result = runOverTable("inputvar x\na = x\n", "1\n", {"--format", "npy"});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("give a file with -o FILE"));
}

TEST_F(RunCommandTest, WhatTheParserRefusesIsToldLikeOtherErrors) {
    const std::string strScript = writeScript("a = 1\n");
    const auto refuse = [&](const std::vector<std::string>& in_vMore) {
        std::vector<std::string> vArguments{"run", strScript};
        vArguments.insert(vArguments.end(), in_vMore.begin(), in_vMore.end());
        const ProcessResult result = runVxpr(vArguments);
        EXPECT_EQ(result.m_iStatus, 2);
        EXPECT_EQ(result.m_strOutput, "");
        EXPECT_THAT(result.m_strErrors, StartsWith("vxpr: error: "));
        EXPECT_THAT(result.m_strErrors, HasSubstr("; run vxpr run --help for more information\n"));
        return result.m_strErrors;
    };
    EXPECT_THAT(refuse({"--fram", "20ms"}), HasSubstr("--fram"));
    EXPECT_THAT(refuse({"--fram", "20ms"}), HasSubstr("; did you mean `--frame`?"));
    EXPECT_THAT(refuse({"--fram=20ms"}), HasSubstr("; did you mean `--frame`?"));
    EXPECT_THAT(refuse({"--format", "xyz"}), HasSubstr("--format: xyz not in {csv,jsonl,npy}"));
    EXPECT_THAT(refuse({"--fram", "20ms", "--format", "xyz"}),
                HasSubstr("--format: xyz not in {csv,jsonl,npy}; run"));
    EXPECT_THAT(refuse({"--channel", "0"}), HasSubstr("--channel: "));
    EXPECT_THAT(runVxpr({"check"}).m_strErrors,
                HasSubstr("vxpr: error: SCRIPT is required; run vxpr check --help"));
}

TEST_F(RunCommandTest, WhatIsAboutARecordingIsRefusedWithoutOne) {
    const std::string strScript = "inputvar x\na = x\n";
    const std::vector<std::vector<std::string>> vCases{{"--raw", "s16le,8000,1"},
                                                       {"--channel", "1"},
                                                       {"--rate", "8000"},
                                                       {"--pad"},
                                                       {"--frame", "1s"}};
    for (const auto& vOptions : vCases) {
        const ProcessResult result = runOverTable(strScript, "1\n", vOptions);
        EXPECT_EQ(result.m_iStatus, 2);
        EXPECT_THAT(result.m_strErrors,
                    HasSubstr(vOptions.front() + " is about a recording: give one with -i"));
    }
}

TEST_F(RunCommandTest, WithoutARecordingTheStepIsATime) {
    const std::string strScript = writeScript("inputvar x\na = x\n");
    const std::string strTable = "x=" + m_Scratch.write("x.csv", "1\n2\n");
    for (const std::string strOption : {"--frame", "--hop"}) {
        EXPECT_EQ(runVxpr({"run", strScript, "--input", strTable, strOption, "1s"}).m_strOutput,
                  "time,a\n0,1\n1,2\n");
        EXPECT_THAT(runVxpr({"run", strScript, "--input", strTable, strOption, "160"}).m_strErrors,
                    HasSubstr("there is no sample rate: give " + strOption + " as a time"));
    }
}

TEST_F(RunCommandTest, TheOutputNeverReplacesWhatIsRead) {
    const std::string strWave = writeRamp(160);
    const std::string strBefore = readFile(strWave);
    const ProcessResult result = runVxpr({"run", writeScript("inputvar frame\na = 1\n"), "-i",
                                          strWave, "-o", m_Scratch.getPath("./a.wav")});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("would replace a file that is read"));
    EXPECT_EQ(readFile(strWave), strBefore);
}

TEST_F(RunCommandTest, OptimizedOrNotTheTableIsTheSame) {
    const std::string strScript =
        "inputvar x\nm(y) = sum(y) / sizeOf(y)\na = m(slidingWindow<3>(x))\n"
        "b = m(slidingWindow<3>(x)) + a\nc = if(isGreater(a, 2), {a, b}, "
        "{b, a})\n";
    const std::string strTable = "1\n2\n3\n4\n5\n";
    const ProcessResult optimized = runOverTable(strScript, strTable);
    EXPECT_EQ(optimized.m_iStatus, 0);
    EXPECT_EQ(optimized.m_strOutput,
              runOverTable(strScript, strTable, {"--no-optimize"}).m_strOutput);
}

TEST_F(RunCommandTest, TheEnginesLogIsShownOnDemand) {
    const ProcessResult result = runOverTable("inputvar x\na = x\n", "1\n", {"--log", "debug"});
    EXPECT_EQ(result.m_iStatus, 0);
    EXPECT_THAT(result.m_strErrors, HasSubstr("DEBUG quillmark.math.xpr."));
    EXPECT_EQ(result.m_strOutput, "time,a\n0,1\n");
    EXPECT_EQ(runOverTable("inputvar x\na = x\n", "1\n").m_strErrors, "");
}

struct CommandLine {
    std::vector<std::string> m_vArguments;
    const char* m_szAdvice;
};

class CommandLineTest : public RunTest, public testing::WithParamInterface<CommandLine> {};

TEST_P(CommandLineTest, AWrongOneIsRefusedWithAdvice) {
    std::vector<std::string> vArguments{"run",
                                        writeScript("inputvar frame\ninputvar x\na = frame\n")};
    for (const std::string& strArgument : GetParam().m_vArguments) {
        vArguments.push_back(strArgument == "WAVE" ? writeRamp(320) : strArgument);
    }
    const ProcessResult result = runVxpr(vArguments);
    EXPECT_EQ(result.m_iStatus, 2) << result.m_strErrors;
    EXPECT_THAT(result.m_strErrors, HasSubstr(GetParam().m_szAdvice));
    EXPECT_EQ(result.m_strOutput, "");
}

INSTANTIATE_TEST_SUITE_P(
    Run, CommandLineTest,
    testing::Values(CommandLine{{}, "give a recording with -i"},
                    CommandLine{{"-i", "WAVE", "--frame", "0"}, "--frame 0 can't be used"},
                    CommandLine{{"-i", "WAVE", "--hop", "0ms"}, "--hop 0ms can't be used"},
                    CommandLine{{"-i", "WAVE", "--frame", "0.01ms"}, "comes to 0 samples at 8000"},
                    CommandLine{{"-i", "WAVE", "--frame", "99999999"}, "and 16777216 samples"},
                    CommandLine{{"-i", "WAVE", "--raw", "s16"}, "such as s16le,8000,1"},
                    CommandLine{{"-i", "WAVE", "--channel", "0"}, "--channel"},
                    CommandLine{{"-i", "WAVE", "--rate", "0"}, "--rate"},
                    CommandLine{{"-i", "WAVE", "--rate", "9999999"}, "more than 256 times apart"},
                    CommandLine{{"-i", "WAVE", "--input", "x"}, "such as --input pitch=pitch.csv"},
                    CommandLine{{"-i", "WAVE", "--input", "x=a", "--input", "x=b"}, "given twice"},
                    CommandLine{{"-i", "WAVE", "--input", "zzz=no.csv"},
                                "--input zzz=no.csv feeds nothing: the script declares only "
                                "frame, x by `inputvar`"},
                    CommandLine{{"-i", "WAVE", "--input", "X=a"}, "did you mean `x`?"},
                    CommandLine{{"--input", "x=a", "--hop", "5"}, "as a time, such as 20ms"},
                    CommandLine{{"-i", "WAVE", "-I", "/no/such/place"}, "no such directory"},
                    CommandLine{{"-i", "WAVE", "--format", "xml"}, "csv"},
                    CommandLine{{"-i", "-", "--input", "x=-"}, "only one of the script"},
                    CommandLine{{"-i", "WAVE", "--log", "loud"}, "--log"},
                    CommandLine{{"-i", "WAVE", "--no-such-option"}, "--no-such-option"}));

TEST(VxprTest, HelpAndVersionAreResults) {
    EXPECT_THAT(runVxpr({"--version"}).m_strOutput, StartsWith("vxpr 1."));
    for (const char* szCommand : {"run", "check", "list"}) {
        const ProcessResult result = runVxpr({szCommand, "--help"});
        EXPECT_EQ(result.m_iStatus, 0);
        EXPECT_THAT(result.m_strOutput, HasSubstr("EXAMPLES"));
        EXPECT_EQ(result.m_strErrors, "");
    }
}

TEST(VxprTest, AFullDiskIsToldOfHelpAndVersion) {
    ProcessOptions options;
    options.m_strOutputPath = "/dev/full";
    for (const std::vector<std::string>& vArguments : std::vector<std::vector<std::string>>{
             {"--help"}, {"--version"}, {"run", "--help"}, {"list"}}) {
        const ProcessResult result = runVxpr(vArguments, options);
        EXPECT_EQ(result.m_iStatus, 1) << vArguments[0];
        EXPECT_THAT(result.m_strErrors,
                    HasSubstr("can't write the standard output: No space left on device"))
            << vArguments[0];
    }
}

TEST(VxprTest, WithoutACommandTheCommandLineIsAtFault) {
    const ProcessResult result = runVxpr({});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors,
                HasSubstr("a command is missing; the commands are run, check, graph, list"));
}

TEST(VxprTest, AWordThatIsNoCommandIsNamed) {
    const ProcessResult word = runVxpr({"rnu", "x.xpr"});
    EXPECT_EQ(word.m_iStatus, 2);
    EXPECT_THAT(word.m_strErrors, HasSubstr("`rnu` is no command; the commands are run, check, "
                                            "graph, list; did you mean `run`?"));
    const ProcessResult option = runVxpr({"--loud"});
    EXPECT_EQ(option.m_iStatus, 2);
    EXPECT_THAT(option.m_strErrors, HasSubstr("`--loud` is no option of vxpr itself"));
}

} // namespace Vxpr
