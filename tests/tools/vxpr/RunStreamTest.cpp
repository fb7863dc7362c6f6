#include "RunTest.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::HasSubstr;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool SANITIZED = true;
#else
constexpr bool SANITIZED = false;
#endif

class RunStreamTest : public RunTest {};

TEST_F(RunStreamTest, AWaveFileThroughAPipeGivesTheSameTable) {
    const std::string strScript = writeScript("inputvar frame\ninputvar spectrum\na = max(frame)\n"
                                              "b = max(spectrum)\n");
    const std::string strWave = m_Scratch.getPath("tone.wav");
    writeWave(strWave, makeTone(700.0, 0.5, 8000, 8000));
    const ProcessResult file = runVxpr({"run", strScript, "-i", strWave, "--hop", "50"});
    const ProcessResult pipe =
        runVxpr({"run", strScript, "-i", "-", "--hop", "50"}, withInput(readFile(strWave)));
    EXPECT_EQ(pipe.m_strErrors, "");
    EXPECT_EQ(pipe.m_iStatus, 0);
    EXPECT_EQ(pipe.m_strOutput, file.m_strOutput);
}

TEST_F(RunStreamTest, SamplesWithoutAHeaderComeThroughAPipe) {
    const ProcessResult result =
        runVxpr({"run", writeScript("inputvar frame\n"), "frame", "-i", "-", "--raw",
                 "s16le,8000,1", "--frame", "2"},
                withInput(std::string("\x00\x40\x00\xc0\x00\x20\x00\x10", 8)));
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_strOutput, "time,frame[0],frame[1]\n0,0.5,-0.5\n0.00025,0.25,0.125\n");
}

TEST_F(RunStreamTest, WhatIsNoWaveFileIsRefusedWithAdvice) {
    const ProcessResult result =
        runVxpr({"run", writeScript("inputvar frame\na = frame\n"), "-i", "-"},
                withInput("no sound at all, but quite some text that goes on for a while"));
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("the standard input is no recording"));
    EXPECT_THAT(result.m_strErrors, HasSubstr("a pipe must bring a WAV file, or samples without a "
                                              "header with --raw"));
}

TEST_F(RunStreamTest, AnEmptyPipeHoldsNoSamples) {
    const ProcessResult result = runVxpr(
        {"run", writeScript("inputvar frame\na = frame\n"), "-i", "-", "--raw", "s16le,8000,1"});
    EXPECT_EQ(result.m_iStatus, 1);
    EXPECT_THAT(result.m_strErrors, HasSubstr("the standard input holds no samples"));
}

TEST_F(RunStreamTest, EachRowComesAsSoonAsItsFrameHasCome) {
    const std::string strScript = writeScript("inputvar frame\na = max(frame)\n");
    // The samples of a frame are written only after the row of the frame before has been read.
    std::array<int, 2> samples{};
    std::array<int, 2> rows{};
    ASSERT_EQ(pipe(samples.data()), 0);
    ASSERT_EQ(pipe(rows.data()), 0);
    const pid_t process = fork();
    if (process == 0) {
        dup2(samples[0], STDIN_FILENO);
        dup2(rows[1], STDOUT_FILENO);
        for (const int iFile : {samples[0], samples[1], rows[0], rows[1]}) {
            close(iFile);
        }
        execl(VXPR_PROGRAM, "vxpr", "run", strScript.c_str(), "-i", "-", "--raw", "s16le,8000,1",
              nullptr);
        _exit(127);
    }
    close(samples[0]);
    close(rows[1]);
    alarm(60);
    const auto readLine = [&] {
        std::string strLine;
        char c = '\0';
        while (read(rows[0], &c, 1) == 1 && c != '\n') {
            strLine.push_back(c);
        }
        return strLine;
    };
    const auto writeFrame = [&](char in_cHighByte) {
        std::string strFrame;
        for (int iSample = 0; iSample < 160; ++iSample) {
            strFrame += std::string("\x00", 1) + in_cHighByte;
        }
        writeAll(samples[1], strFrame.data(), strFrame.size());
    };
    writeFrame('\x40');
    EXPECT_EQ(readLine(), "time,a");
    EXPECT_EQ(readLine(), "0,0.5");
    writeFrame('\x20');
    EXPECT_EQ(readLine(), "0.02,0.25");
    writeFrame('\x10');
    EXPECT_EQ(readLine(), "0.04,0.125");
    close(samples[1]);
    EXPECT_EQ(readLine(), "");
    close(rows[0]);
    int iStatus = 0;
    waitpid(process, &iStatus, 0);
    alarm(0);
    EXPECT_TRUE(WIFEXITED(iStatus));
    EXPECT_EQ(WEXITSTATUS(iStatus), 0);
}

TEST_F(RunStreamTest, MemoryStaysFlatOverAnHourOfSound) {
    const std::string strPortion = toRaw(makeTone(440.0, 0.5, 8000, 80000));
    ProcessOptions options;
    options.m_Feed = [&](int in_iFile) {
        for (int iPortion = 0; iPortion < 360; ++iPortion) {
            writeAll(in_iFile, strPortion.data(), strPortion.size());
        }
    };
    const ProcessResult result =
        runVxpr({"run", std::string(VELMORA_SOURCE_DIR) + "/examples/scripts/loudness.xpr", "-i",
                 "-", "--raw", "s16le,8000,1", "-o", m_Scratch.getPath("out.csv")},
                options);
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_iStatus, 0);
    const std::string strTable = readFile(m_Scratch.getPath("out.csv"));
    EXPECT_EQ(std::count(strTable.begin(), strTable.end(), '\n'), 180001);
    if (!SANITIZED) {
        EXPECT_LT(result.m_lPeakKilobytes, 60 * 1024);
    }
}

TEST_F(RunStreamTest, ProgressShowsOnATerminalAndIsWiped) {
    const std::string strWave = m_Scratch.getPath("long.wav");
    writeWave(strWave, std::vector<double>(8000 * 20));
    const std::vector<std::string> vArguments{"run", writeScript("inputvar frame\na = frame[0]\n"),
                                              "-i", strWave};
    ProcessOptions options;
    options.m_bErrorsOnTerminal = true;
    const ProcessResult shown = runVxpr(vArguments, options);
    EXPECT_EQ(shown.m_iStatus, 0);
    EXPECT_THAT(shown.m_strErrors, HasSubstr("0:00 of 0:20 (0 %)"));
    EXPECT_THAT(shown.m_strErrors, testing::EndsWith("\r\x1b[K"));
    EXPECT_EQ(runVxpr(vArguments).m_strErrors, "");
}

TEST_F(RunStreamTest, ProgressIsntShownWhereItDisturbs) {
    const std::string strScript = writeScript("inputvar frame\na = frame[0]\n");
    const std::string strLong = m_Scratch.getPath("long.wav");
    writeWave(strLong, std::vector<double>(8000 * 20));
    const std::string strShort = m_Scratch.getPath("short.wav");
    writeWave(strShort, std::vector<double>(8000 * 2));
    ProcessOptions options;
    options.m_bErrorsOnTerminal = true;
    EXPECT_EQ(runVxpr({"run", strScript, "-i", strLong, "-q"}, options).m_strErrors, "");
    EXPECT_EQ(runVxpr({"run", strScript, "-i", strShort}, options).m_strErrors, "");
    options.m_bOutputOnTerminal = true;
    EXPECT_EQ(runVxpr({"run", strScript, "-i", strLong}, options).m_strErrors, "");
}

/// A run over samples from a pipe that goes on until a signal comes.
class LiveRun {
public:
    explicit LiveRun(std::vector<std::string> in_vArguments) {
        EXPECT_EQ(pipe(m_Samples.data()), 0);
        EXPECT_EQ(pipe(m_Errors.data()), 0);
        std::vector<char*> vArguments;
        for (std::string& strArgument : in_vArguments) {
            vArguments.push_back(strArgument.data());
        }
        vArguments.push_back(nullptr);
        m_Process = fork();
        if (m_Process == 0) {
            dup2(m_Samples[0], STDIN_FILENO);
            dup2(m_Errors[1], STDERR_FILENO);
            for (const int iFile : {m_Samples[0], m_Samples[1], m_Errors[0], m_Errors[1]}) {
                close(iFile);
            }
            execv(VXPR_PROGRAM, vArguments.data());
            _exit(127);
        }
        close(m_Samples[0]);
        close(m_Errors[1]);
    }

    ~LiveRun() {
        close(m_Samples[1]);
        close(m_Errors[0]);
    }

    /// Returns when all of it has been taken.
    void feed(const std::string& in_strSamples) {
        EXPECT_EQ(write(m_Samples[1], in_strSamples.data(), in_strSamples.size()),
                  static_cast<ssize_t>(in_strSamples.size()));
        for (int iWaiting = 1; iWaiting != 0; usleep(1000)) {
            ASSERT_EQ(ioctl(m_Samples[1], FIONREAD, &iWaiting), 0);
        }
    }

    /// The status, and what stood on the standard error, once the signal has ended the run.
    int end(int in_iSignal, std::string& out_strErrors) {
        kill(m_Process, in_iSignal);
        std::array<char, 4096> buffer{};
        for (ssize_t iRead = 1; iRead > 0;) {
            iRead = read(m_Errors[0], buffer.data(), buffer.size());
            out_strErrors.append(buffer.data(),
                                 static_cast<std::size_t>(std::max<ssize_t>(iRead, 0)));
        }
        int iStatus = 0;
        waitpid(m_Process, &iStatus, 0);
        return iStatus;
    }

private:
    std::array<int, 2> m_Samples{};
    std::array<int, 2> m_Errors{};
    pid_t m_Process = -1;
};

TEST_F(RunStreamTest, ASignalEndsALiveRecordingAndLosesNothing) {
    const std::string strScript = writeScript("inputvar frame\na = frame[0]\n");
    const std::string strOutput = m_Scratch.getPath("out.csv");
    for (const int iSignal : {SIGINT, SIGTERM}) {
        LiveRun run({"vxpr", "run", strScript, "-i", "-", "--raw", "s16le,8000,1", "--frame", "2",
                     "--stats", "-o", strOutput});
        run.feed(std::string("\x00\x40\x00\xc0\x00\x20\x00\x10\x00\x10", 10));
        std::string strErrors;
        const int iStatus = run.end(iSignal, strErrors);
        EXPECT_TRUE(WIFSIGNALED(iStatus));
        EXPECT_EQ(WTERMSIG(iStatus), iSignal);
        EXPECT_EQ(readFile(strOutput), "time,a\n0,0.5\n0.00025,0.25\n");
        EXPECT_THAT(strErrors, HasSubstr("evaluations"));
        EXPECT_THAT(strErrors, testing::Not(HasSubstr("error")));
        unlink(strOutput.c_str());
    }
}

TEST_F(RunStreamTest, ASignalInTheMiddleOfAPromisedLengthIsNoError) {
    const std::string strScript = writeScript("inputvar frame\na = frame[0]\n");
    const std::string strWave = m_Scratch.getPath("long.wav");
    writeWave(strWave, std::vector<double>(8000, 0.5));
    const std::string strOutput = m_Scratch.getPath("out.csv");
    LiveRun run({"vxpr", "run", strScript, "-i", "-", "--frame", "80", "-o", strOutput});
    run.feed(readFile(strWave).substr(0, 8000));
    std::string strErrors;
    EXPECT_TRUE(WIFSIGNALED(run.end(SIGINT, strErrors)));
    EXPECT_EQ(strErrors, "");
    EXPECT_THAT(readFile(strOutput), HasSubstr("\n0.01,0.5\n"));
}

TEST_F(RunStreamTest, AnInterruptedRunLeavesNoFile) {
    const std::string strScript = writeScript("inputvar frame\na = frame[0]\n");
    const std::string strOutput = m_Scratch.getPath("out.csv");
    std::array<int, 2> samples{};
    ASSERT_EQ(pipe(samples.data()), 0);
    const pid_t process = fork();
    if (process == 0) {
        dup2(samples[0], STDIN_FILENO);
        close(samples[0]);
        close(samples[1]);
        execl(VXPR_PROGRAM, "vxpr", "run", strScript.c_str(), "-i", "-", "--raw", "s16le,8000,1",
              "-o", strOutput.c_str(), nullptr);
        _exit(127);
    }
    close(samples[0]);
    // Its temporary file tells that it has begun.
    while (m_Scratch.list().size() < 2) {
        usleep(1000);
    }
    kill(process, SIGINT);
    int iStatus = 0;
    waitpid(process, &iStatus, 0);
    close(samples[1]);
    EXPECT_TRUE(WIFSIGNALED(iStatus));
    EXPECT_THAT(m_Scratch.list(), testing::ElementsAre("s.xpr"));
}

} // namespace Vxpr
