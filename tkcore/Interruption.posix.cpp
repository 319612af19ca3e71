#include "tkcore/Interruption.h"

#include <array>
#include <csignal>

namespace tkcore {

namespace {

constexpr std::array kEndingSignals{SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t notedSignal = 0;

extern "C" void noteSignal(int signal) {
    if (notedSignal == 0) {
        notedSignal = signal;
    }
}

}  // namespace

void noteInterruptions() {
    for (const int signal : kEndingSignals) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            action = {};
            action.sa_handler = noteSignal;
            action.sa_flags = SA_RESTART;
            sigaction(signal, &action, nullptr);
        }
    }
    // A closed pipe and a file that may not grow are errors of a write, to be cleaned up after.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int interruption() noexcept {
    return notedSignal;
}

void endByInterruption() {
    if (notedSignal != 0) {
        std::signal(notedSignal, SIG_DFL);
        std::raise(notedSignal);
    }
}

}  // namespace tkcore
