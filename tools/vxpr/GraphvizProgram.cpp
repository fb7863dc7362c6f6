#include "GraphvizProgram.h"

#include "Failure.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>

namespace Vxpr {

namespace {

/// The shells' answer for a program that isn't there; spawning may give it too.
constexpr int NOT_FOUND = 127;

/// A file without a name: the program reads and writes as much as it likes, in any order, while
/// nobody waits for it.
class Scratch {
public:
    Scratch() : m_pFile(std::tmpfile(), &std::fclose) {
        if (m_pFile == nullptr) {
            fail(errno);
        }
        fcntl(getNumber(), F_SETFD, FD_CLOEXEC);
    }

    int getNumber() const { return fileno(m_pFile.get()); }

    void write(const std::string& in_strText) {
        if (std::fwrite(in_strText.data(), 1, in_strText.size(), m_pFile.get()) !=
                in_strText.size() ||
            std::fflush(m_pFile.get()) != 0) {
            fail(errno);
        }
        std::rewind(m_pFile.get());
    }

    std::string read() {
        std::rewind(m_pFile.get());
        std::string strText;
        std::array<char, 65536> buffer{};
        for (;;) {
            const std::size_t uiRead = std::fread(buffer.data(), 1, buffer.size(), m_pFile.get());
            if (uiRead == 0) {
                return strText;
            }
            strText.append(buffer.data(), uiRead);
        }
    }

private:
    [[noreturn]] static void fail(int in_iError) {
        throw Failure::ofData(std::string("can't write a temporary file: ") +
                              std::strerror(in_iError) +
                              "; free some space in the directory for "
                              "temporary files");
    }

    std::unique_ptr<std::FILE, decltype(&std::fclose)> m_pFile;
};

/// What the process is started with.
class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&m_Actions);
        posix_spawnattr_init(&m_Attributes);
        // vxpr itself ignores it.
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        posix_spawnattr_setsigdefault(&m_Attributes, &defaults);
        posix_spawnattr_setflags(&m_Attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&m_Attributes);
        posix_spawn_file_actions_destroy(&m_Actions);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    void redirect(int in_iFrom, int in_iTo) {
        posix_spawn_file_actions_adddup2(&m_Actions, in_iFrom, in_iTo);
    }

    /// The error, 0 if there is none.
    int spawn(const char* in_szProgram, char* const* in_pArguments, pid_t& out_Process) const {
        return posix_spawnp(&out_Process, in_szProgram, &m_Actions, &m_Attributes, in_pArguments,
                            environ);
    }

private:
    posix_spawn_file_actions_t m_Actions{};
    posix_spawnattr_t m_Attributes{};
};

int waitFor(pid_t in_Process) {
    int iStatus = 0;
    while (waitpid(in_Process, &iStatus, 0) < 0 && errno == EINTR) {
    }
    return iStatus;
}

Failure failToStart(int in_iError) {
    const bool bMissing = in_iError == ENOENT;
    return Failure::ofData(
        std::string("pictures are drawn by `dot`, the program of Graphviz, which ") +
        (bMissing ? "isn't installed" : std::string("can't be run: ") + std::strerror(in_iError)) +
        "; install it (on Debian: apt-get install graphviz), or write the graph as text with a "
        "name that ends in .dot");
}

Failure failToDraw(int in_iStatus, const std::string& in_strMessages) {
    const std::string strFirst = in_strMessages.substr(0, in_strMessages.find('\n'));
    const std::string strHow =
        WIFSIGNALED(in_iStatus) ? "was ended by signal " + std::to_string(WTERMSIG(in_iStatus))
                                : "failed with status " + std::to_string(WEXITSTATUS(in_iStatus));
    return Failure::ofData("`dot`, the program of Graphviz, " + strHow +
                           (strFirst.empty() ? "" : " (" + strFirst + ")") +
                           "; name a feature for a smaller graph, or write the graph as text with "
                           "a name that ends in .dot");
}

} // namespace

std::string GraphvizProgram::draw(const std::string& in_strGraph, const std::string& in_strFormat) {
    Scratch graph;
    Scratch picture;
    Scratch messages;
    graph.write(in_strGraph);
    SpawnSettings settings;
    settings.redirect(graph.getNumber(), STDIN_FILENO);
    settings.redirect(picture.getNumber(), STDOUT_FILENO);
    settings.redirect(messages.getNumber(), STDERR_FILENO);
    std::string strProgram = "dot";
    std::string strFormat = "-T" + in_strFormat;
    const std::array<char*, 3> arguments{strProgram.data(), strFormat.data(), nullptr};
    pid_t process = 0;
    const int iError = settings.spawn(strProgram.c_str(), arguments.data(), process);
    if (iError != 0) {
        throw failToStart(iError);
    }
    const int iStatus = waitFor(process);
    if (WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == NOT_FOUND) {
        throw failToStart(ENOENT);
    }
    const std::string strPicture = picture.read();
    if (iStatus != 0 || strPicture.empty()) {
        throw failToDraw(iStatus, messages.read());
    }
    return strPicture;
}

} // namespace Vxpr
