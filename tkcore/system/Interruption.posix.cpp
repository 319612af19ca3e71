#include "tkcore/system/Interruption.h"

#include <array>
#include <atomic>
#include <csignal>

namespace tkcore {

namespace {

constexpr std::array kEndingSignals{SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGXCPU};

std::atomic<bool> isSuspensionAsked = false;

extern "C" void noteSignal(int signal) {
    noteRequestToEnd(signal);
}

extern "C" void noteSuspension(int /*signal*/) {
    isSuspensionAsked = true;
}

/// Unless the caller of the program has switched the signal off.
void handle(int signal, void (*handler)(int)) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
        action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

void noteInterruptions() {
    forgetRequestsToEnd();
    for (const int signal : kEndingSignals) {
        handle(signal, noteSignal);
    }
    handle(SIGTSTP, noteSuspension);
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

void suspendIfAsked(const std::function<void()>& beforeIt, const std::function<void()>& afterIt) {
    if (!isSuspensionAsked.exchange(false)) {
        return;
    }
    beforeIt();
    // The system suspends, or does not where there would be nobody to let us go on.
    std::signal(SIGTSTP, SIG_DFL);
    std::raise(SIGTSTP);
    handle(SIGTSTP, noteSuspension);
    afterIt();
}

}  // namespace tkcore
