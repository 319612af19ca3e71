#include "tkcore/Interruption.h"

#include <array>
#include <csignal>

namespace tkcore {

namespace {

constexpr std::array kEndingSignals{SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGXCPU};

extern "C" void noteSignal(int signal) {
    noteRequestToEnd(signal);
}

}  // namespace

void noteInterruptions() {
    forgetRequestsToEnd();
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

void endByInterruption() {
    if (const int signal = interruption(); signal != 0) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
}

}  // namespace tkcore
