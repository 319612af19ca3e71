#include "tkcore/system/System.h"

#include <boost/thread/thread.hpp>

namespace tkcore {

unsigned hardwareThreads() noexcept {
    return boost::thread::hardware_concurrency();
}

void tryForAMoment(const std::function<bool()>& isSettled) {
    constexpr unsigned kPause = 10;
    const auto deadline = std::chrono::steady_clock::now() + removalPatience();
    while (!isSettled() && std::chrono::steady_clock::now() < deadline) {
        sleepMilliseconds(kPause);
    }
}

}  // namespace tkcore
