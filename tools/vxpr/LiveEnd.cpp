#include "LiveEnd.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>

namespace Vxpr {

namespace {

// Plain memory and flags are all that a signal handler may touch.
constexpr int SIGNALS[] = {SIGINT, SIGTERM};
constexpr std::size_t SIGNAL_COUNT = sizeof SIGNALS / sizeof *SIGNALS;
struct sigaction g_formers[SIGNAL_COUNT];
volatile std::sig_atomic_t g_iSignal = 0;
volatile std::sig_atomic_t g_iFile = -1;
volatile std::sig_atomic_t g_iNothing = -1;

void restoreFormers() {
    for (std::size_t ui = 0; ui < SIGNAL_COUNT; ++ui) {
        sigaction(SIGNALS[ui], &g_formers[ui], nullptr);
    }
}

/// A read that waits is begun anew behind the handler, and finds the end.
void endSound(int in_iSignal) {
    g_iSignal = in_iSignal;
    dup2(g_iNothing, g_iFile);
    restoreFormers();
}

} // namespace

LiveEnd::LiveEnd(int in_iFile) {
    g_iSignal = 0;
    g_iFile = in_iFile;
    g_iNothing = in_iFile < 0 ? -1 : open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (g_iNothing < 0) {
        return;
    }
    for (std::size_t ui = 0; ui < SIGNAL_COUNT; ++ui) {
        sigaction(SIGNALS[ui], nullptr, &g_formers[ui]);
    }
    struct sigaction action {};
    action.sa_handler = endSound;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int iSignal : SIGNALS) {
        sigaddset(&action.sa_mask, iSignal);
    }
    for (std::size_t ui = 0; ui < SIGNAL_COUNT; ++ui) {
        // A signal that the caller had ignored, as nohup does, stays ignored.
        if (g_formers[ui].sa_handler != SIG_IGN) {
            sigaction(SIGNALS[ui], &action, nullptr);
        }
    }
}

LiveEnd::~LiveEnd() {
    if (g_iNothing >= 0) {
        restoreFormers();
        close(g_iNothing);
        g_iNothing = -1;
    }
}

bool LiveEnd::hasCome() const {
    return g_iSignal != 0;
}

void LiveEnd::goOn() const {
    if (g_iSignal != 0) {
        std::raise(g_iSignal);
    }
}

} // namespace Vxpr
