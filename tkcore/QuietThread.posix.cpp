#include "tkcore/QuietThread.h"

#include <utility>

#include <signal.h>

namespace tkcore {

namespace {

/// Blocks all signals for the calling thread, and so for those that it starts meanwhile.
class SignalBlock final {
public:
    SignalBlock() {
        sigset_t all{};
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &older);
    }
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &older, nullptr); }

    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

private:
    sigset_t older{};
};

}  // namespace

std::jthread startQuietThread(std::function<void()> work) {
    const SignalBlock block;
    return std::jthread(std::move(work));
}

}  // namespace tkcore
