#include "RunTest.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class RunBadInputTest : public RunTest {
protected:
    /// A run that must fail, say why, and leave no output of its own.
    void expectFault(const std::string& in_strScript, const std::string& in_strRecording,
                     const std::string& in_strText, std::vector<std::string> in_vMore = {}) const {
        std::vector<std::string> vArguments{
            "run", in_strScript, "-i", in_strRecording, "-o", m_Scratch.getPath("out.csv")};
        vArguments.insert(vArguments.end(), in_vMore.begin(), in_vMore.end());
        const ProcessResult result = runVxpr(vArguments);
        EXPECT_EQ(result.m_iStatus, 1);
        EXPECT_THAT(result.m_strErrors, HasSubstr(in_strText));
        for (const std::string& strName : m_Scratch.list()) {
            EXPECT_EQ(strName.find("out.csv"), std::string::npos) << strName;
        }
    }

    std::string writeGoodScript() const { return writeScript("inputvar frame\na = frame[0]\n"); }
};

TEST_F(RunBadInputTest, AScriptThatIsADirectory) {
    expectFault(m_Scratch.getPath(), writeRamp(320), "is a directory; name a script in it");
}

TEST_F(RunBadInputTest, AScriptThatIsMissing) {
    expectFault(m_Scratch.getPath("no.xpr"), writeRamp(320),
                "check the path, with its ending .xpr");
}

TEST_F(RunBadInputTest, AScriptWhoseLinksLeadInACircle) {
    const std::string strPath = m_Scratch.getPath("circle.xpr");
    ASSERT_EQ(symlink("circle.xpr", strPath.c_str()), 0);
    expectFault(strPath, writeRamp(320), "symbolic links; check the path, with its ending .xpr");
}

TEST_F(RunBadInputTest, AnEmptyScript) {
    expectFault(writeScript(""), writeRamp(320), "defines nothing that has a value of its own");
    expectFault(writeScript("// nothing\n\n"), writeRamp(320), "write a definition such as");
}

TEST_F(RunBadInputTest, LineEndsOfAnOldSystemAreUnderstood) {
    const ProcessResult result =
        runVxpr({"run", writeScript("inputvar frame\rn = sizeOf(frame)\r"), "-i", writeRamp(160)});
    EXPECT_EQ(result.m_strOutput, "time,n\n0,160\n");
    expectFault(writeScript("inputvar frame\rn = sizeOf(frme)\r"), writeRamp(160),
                "s.xpr:2:12: error: `frme` isn't defined here");
}

TEST_F(RunBadInputTest, BytesAbove127InCommentsAreUnderstood) {
    EXPECT_EQ(runVxpr({"run", writeScript("# H\xc3\xb6he\ninputvar frame\nn = sizeOf(frame)\n"),
                       "-i", writeRamp(160)})
                  .m_strOutput,
              "time,n\n0,160\n");
}

TEST_F(RunBadInputTest, BytesAbove127InNames) {
    expectFault(writeScript("inputvar frame\nH\xc3\xb6he = 1\n"), writeRamp(320),
                "s.xpr:2:2: error: the byte 0xC3 can't stand here");
    expectFault(writeScript("inputvar frame\nb = \xe4\n"), writeRamp(320), "the byte 0xE4");
}

TEST_F(RunBadInputTest, AZeroByte) {
    expectFault(writeScript(std::string("a = 1\nb = \0 2\n", 14)), writeRamp(320),
                "s.xpr:2:5: error: there is a zero byte here, so this is no plain text");
}

TEST_F(RunBadInputTest, AByteOrderMark) {
    expectFault(writeScript("\xef\xbb\xbf"
                            "a = 1\n"),
                writeRamp(320), "s.xpr:1:1: error: the script begins with a byte-order mark");
}

TEST_F(RunBadInputTest, ANameWithAPath) {
    m_Scratch.write("sub/lib.xpr", "x = 1\n");
    expectFault(writeScript("inputvar frame\na = sub/lib.x\n"), writeRamp(320),
                "`sub` isn't defined");
    const ProcessResult result = runVxpr({"run", writeGoodScript(), "sub/a", "-i", writeRamp(320)});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("doesn't define `sub/a`"));
}

TEST_F(RunBadInputTest, ACircleBetweenScripts) {
    m_Scratch.write("t.xpr", "y = s.a\n");
    expectFault(writeScript("a = t.y\n"), writeRamp(320), "is defined by way of itself");
}

TEST_F(RunBadInputTest, ARecordingThatIsMissing) {
    expectFault(writeGoodScript(), m_Scratch.getPath("no.wav"), "check the path after -i");
}

TEST_F(RunBadInputTest, ARecordingThatIsADirectory) {
    expectFault(writeGoodScript(), m_Scratch.getPath(), "is a directory; name the recording in it");
}

TEST_F(RunBadInputTest, ARecordingThatIsNoSound) {
    const std::string strScript = writeGoodScript();
    expectFault(strScript, strScript, "WAV, FLAC and Ogg files are understood");
    expectFault(strScript, m_Scratch.write("empty.wav", ""), "is no recording that can be read");
}

TEST_F(RunBadInputTest, ARecordingWithoutSamples) {
    writeWave(m_Scratch.getPath("none.wav"), {});
    expectFault(writeGoodScript(), m_Scratch.getPath("none.wav"), "holds no samples");
}

TEST_F(RunBadInputTest, ARecordingWithoutChannels) {
    std::string strBytes = readFile(writeRamp(320));
    strBytes[22] = '\0';
    expectFault(writeGoodScript(), m_Scratch.write("none.wav", strBytes), "Channel count is zero");
}

TEST_F(RunBadInputTest, AFrameOfMoreThanTheRecording) {
    expectFault(writeGoodScript(), writeRamp(159),
                "has 159 samples, fewer than a frame of 160; "
                "choose a smaller --frame, or --pad");
    EXPECT_EQ(runVxpr({"run", writeGoodScript(), "-i", writeRamp(159), "--pad"}).m_iStatus, 0);
}

TEST_F(RunBadInputTest, ATruncatedRecordingGivesWhatIsThereAndSaysSo) {
    const std::string strBytes = readFile(writeRamp(640));
    const std::string strPath = m_Scratch.write("cut.wav", strBytes.substr(0, 44 + 2 * 320));
    for (const bool bPipe : {false, true}) {
        const ProcessResult result =
            runVxpr({"run", writeGoodScript(), "-i", bPipe ? "-" : strPath},
                    bPipe ? withInput(readFile(strPath)) : ProcessOptions());
        EXPECT_EQ(result.m_strOutput, "time,a\n0,0\n0.02,0.15625\n");
        EXPECT_THAT(result.m_strErrors, HasSubstr("is truncated: its header promises 640 samples, "
                                                  "but it ends after 320"));
        EXPECT_EQ(result.m_iStatus, 1);
    }
}

TEST_F(RunBadInputTest, AFileThatCantBeWritten) {
    for (const char* szOutput : {"no/such/place.csv", "."}) {
        const ProcessResult result = runVxpr(
            {"run", writeGoodScript(), "-i", writeRamp(320), "-o", m_Scratch.getPath(szOutput)});
        EXPECT_EQ(result.m_iStatus, 1);
        EXPECT_THAT(result.m_strErrors, HasSubstr("with -o"));
    }
}

TEST_F(RunBadInputTest, AFullDisk) {
    ProcessOptions options;
    options.m_strOutputPath = "/dev/full";
    const ProcessResult standard =
        runVxpr({"run", writeGoodScript(), "-i", writeRamp(320)}, options);
    EXPECT_EQ(standard.m_iStatus, 1);
    EXPECT_THAT(standard.m_strErrors,
                HasSubstr("can't write the standard output: No space left on device"));
    const ProcessResult named =
        runVxpr({"run", writeGoodScript(), "-i", writeRamp(320), "-o", "/dev/full"});
    EXPECT_EQ(named.m_iStatus, 1);
    EXPECT_THAT(named.m_strErrors, HasSubstr("free some space or choose another place"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(RunBadInputTest, ABrokenPipeEndsQuietly) {
    const std::string strWave = m_Scratch.getPath("long.wav");
    writeWave(strWave, std::vector<double>(160 * 20000));
    ProcessOptions options;
    options.m_uiOutputWanted = 10;
    const ProcessResult result = runVxpr({"run", writeGoodScript(), "-i", strWave}, options);
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_iStatus, 0);
}

} // namespace Vxpr
