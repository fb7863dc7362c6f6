#include "ProcessRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <thread>

namespace Vxpr::TestSupport {

namespace {

/// Two ends of a pipe or of a terminal, the near one for the test.
struct Channel {
    int m_iNear = -1;
    int m_iFar = -1;
};

Channel makePipe(bool in_bToProcess) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return in_bToProcess ? Channel{ends[1], ends[0]} : Channel{ends[0], ends[1]};
}

Channel makeTerminal() {
    Channel channel;
    if (openpty(&channel.m_iNear, &channel.m_iFar, nullptr, nullptr, nullptr) != 0) {
        throw std::runtime_error("no terminal");
    }
    fcntl(channel.m_iNear, F_SETFD, FD_CLOEXEC);
    fcntl(channel.m_iFar, F_SETFD, FD_CLOEXEC);
    return channel;
}

Channel makeFile(const std::string& in_strPath) {
    return {-1, open(in_strPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666)};
}

[[noreturn]] void execute(const std::vector<std::string>& in_vArguments,
                          const ProcessOptions& in_Options, int in_iInput, int in_iOutput,
                          int in_iErrors) {
    dup2(in_iInput, STDIN_FILENO);
    dup2(in_iOutput, STDOUT_FILENO);
    dup2(in_iErrors, STDERR_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    if (!in_Options.m_strDirectory.empty() && chdir(in_Options.m_strDirectory.c_str()) != 0) {
        _exit(126);
    }
    std::vector<char*> vArguments{const_cast<char*>("vxpr")};
    for (const std::string& strArgument : in_vArguments) {
        vArguments.push_back(const_cast<char*>(strArgument.c_str()));
    }
    vArguments.push_back(nullptr);
    execv(VXPR_PROGRAM, vArguments.data());
    _exit(127);
}

/// Reads both channels until they are closed, or enough of the output has come.
void readResults(ProcessResult& inout_Result, int& inout_iOutput, int& inout_iErrors,
                 std::size_t in_uiWanted) {
    std::array<char, 65536> buffer{};
    while (inout_iOutput >= 0 || inout_iErrors >= 0) {
        std::array<pollfd, 2> waiting{pollfd{inout_iOutput, POLLIN, 0},
                                      pollfd{inout_iErrors, POLLIN, 0}};
        poll(waiting.data(), waiting.size(), -1);
        for (std::size_t uiChannel = 0; uiChannel < waiting.size(); ++uiChannel) {
            if (waiting[uiChannel].revents == 0) {
                continue;
            }
            int& iFile = uiChannel == 0 ? inout_iOutput : inout_iErrors;
            std::string& strText =
                uiChannel == 0 ? inout_Result.m_strOutput : inout_Result.m_strErrors;
            const ssize_t iRead = read(iFile, buffer.data(), buffer.size());
            if (iRead > 0) {
                strText.append(buffer.data(), static_cast<std::size_t>(iRead));
            }
            const bool bEnough = uiChannel == 0 && in_uiWanted > 0 && strText.size() >= in_uiWanted;
            if (iRead <= 0 || bEnough) {
                close(iFile);
                iFile = -1;
            }
        }
    }
}

void closeIfOpen(int in_iFile) {
    if (in_iFile >= 0) {
        close(in_iFile);
    }
}

} // namespace

ProcessResult runVxpr(const std::vector<std::string>& in_vArguments,
                      const ProcessOptions& in_Options) {
    std::signal(SIGPIPE, SIG_IGN);
    Channel input = makePipe(true);
    Channel output;
    if (in_Options.m_bOutputOnTerminal) {
        output = makeTerminal();
    } else if (!in_Options.m_strOutputPath.empty()) {
        output = makeFile(in_Options.m_strOutputPath);
    } else {
        output = makePipe(false);
    }
    Channel errors = in_Options.m_bErrorsOnTerminal ? makeTerminal() : makePipe(false);

    const pid_t process = fork();
    if (process == 0) {
        execute(in_vArguments, in_Options, input.m_iFar, output.m_iFar, errors.m_iFar);
    }
    close(input.m_iFar);
    closeIfOpen(output.m_iFar);
    close(errors.m_iFar);
    std::thread feeder([&] {
        if (in_Options.m_Feed) {
            in_Options.m_Feed(input.m_iNear);
        }
        close(input.m_iNear);
    });
    ProcessResult result;
    readResults(result, output.m_iNear, errors.m_iNear, in_Options.m_uiOutputWanted);
    int iStatus = 0;
    rusage usage{};
    wait4(process, &iStatus, 0, &usage);
    feeder.join();
    result.m_iStatus = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
    result.m_lPeakKilobytes = usage.ru_maxrss;
    return result;
}

ProcessOptions withInput(const std::string& in_strText) {
    ProcessOptions options;
    options.m_Feed = [in_strText](int in_iFile) {
        writeAll(in_iFile, in_strText.data(), in_strText.size());
    };
    return options;
}

void writeAll(int in_iFile, const char* in_pData, std::size_t in_uiSize) {
    while (in_uiSize > 0) {
        const ssize_t iWritten = write(in_iFile, in_pData, in_uiSize);
        if (iWritten <= 0) {
            return;
        }
        in_pData += iWritten;
        in_uiSize -= static_cast<std::size_t>(iWritten);
    }
}

} // namespace Vxpr::TestSupport
