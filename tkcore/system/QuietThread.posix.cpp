#include "tkcore/system/QuietThread.h"

#include <utility>

#include <signal.h>

namespace tkcore {

namespace {

/// Blocks all signals in the calling thread and in the threads that it starts meanwhile.
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

/// Sets the stack size of new threads. Otherwise it is the caller's limit on the stack, which may
/// be very low. std::jthread offers no other way.
void setUsualStackSize() {
    constexpr std::size_t kStackSize = std::size_t{1} << 20U;
    pthread_attr_t attributes;
    if (pthread_getattr_default_np(&attributes) == 0) {
        pthread_attr_setstacksize(&attributes, kStackSize);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }
}

}  // namespace

std::jthread startQuietThread(std::function<void()> work) {
    const SignalBlock block;
    setUsualStackSize();
    return std::jthread(std::move(work));
}

}  // namespace tkcore
