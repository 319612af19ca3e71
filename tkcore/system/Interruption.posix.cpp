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

/// Sets the handler, unless the program's caller ignores the signal.
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
    // Without these signals, writing to a closed pipe or beyond the file size limit only fails.
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
    // The system suspends us, unless there is no process that could let us go on.
    std::signal(SIGTSTP, SIG_DFL);
    std::raise(SIGTSTP);
    handle(SIGTSTP, noteSuspension);
    afterIt();
}

}  // namespace tkcore
