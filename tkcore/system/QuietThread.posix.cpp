#include "tkcore/system/QuietThread.h"

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

/// The system gives a thread as much stack as the caller's limit on the stack says, be it hardly
/// any; the library has no other way to say how much a thread of its own gets.
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
