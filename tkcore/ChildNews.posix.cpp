#include "tkcore/ChildNews.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace tkcore {

namespace {

constexpr std::array kNewsSignals{SIGCHLD, SIGIO};

volatile std::sig_atomic_t newsCount = 0;

extern "C" void countNews(int) {
    newsCount = (newsCount + 1) & 0x3FFFFFFF;
}

bool beginCount() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kNewsSignals) {
        struct sigaction action {};
        action.sa_handler = countNews;
        action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
        sigaction(signal, &action, nullptr);
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    return true;
}

}  // namespace

int childNews() noexcept {
    [[maybe_unused]] static const bool counting = beginCount();
    return newsCount;
}

bool announceWrites(int readEnd) noexcept {
    childNews();  // nobody may be sent a signal that is not yet counted: it would end the process
    const int flags = fcntl(readEnd, F_GETFL);
    return flags >= 0 && fcntl(readEnd, F_SETOWN, getpid()) == 0 &&
           fcntl(readEnd, F_SETFL, flags | O_ASYNC) == 0;
}

}  // namespace tkcore
