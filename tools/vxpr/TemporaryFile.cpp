#include "TemporaryFile.h"

#include <climits>
#include <csignal>
#include <cstring>
#include <unistd.h>

namespace Vxpr {

namespace {

// Plain memory and a flag are all that a signal handler may touch.
char g_szPath[PATH_MAX];
volatile std::sig_atomic_t g_iWatched = 0;

constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

void removeAndGo(int in_iSignal) {
    if (g_iWatched != 0) {
        unlink(g_szPath);
    }
    std::signal(in_iSignal, SIG_DFL);
    std::raise(in_iSignal);
}

} // namespace

TemporaryFile::Pause::Pause() : m_Former() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int iSignal : SIGNALS) {
        sigaddset(&signals, iSignal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, &m_Former);
}

TemporaryFile::Pause::~Pause() {
    pthread_sigmask(SIG_SETMASK, &m_Former, nullptr);
}

void TemporaryFile::watch(const std::string& in_strPath) {
    if (in_strPath.size() >= sizeof g_szPath) {
        return;
    }
    std::memcpy(g_szPath, in_strPath.c_str(), in_strPath.size() + 1);
    g_iWatched = 1;
    for (const int iSignal : SIGNALS) {
        // A signal that the caller had ignored, as nohup does, stays ignored.
        if (std::signal(iSignal, removeAndGo) == SIG_IGN) {
            std::signal(iSignal, SIG_IGN);
        }
    }
}

void TemporaryFile::forget() {
    g_iWatched = 0;
}

} // namespace Vxpr
