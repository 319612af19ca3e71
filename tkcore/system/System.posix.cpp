#include "tkcore/system/System.h"

#include <cstdlib>
#include <cstring>

#include <time.h>

namespace tkcore {

void sleepMilliseconds(unsigned milliseconds) {
    const timespec pause{static_cast<time_t>(milliseconds / 1000),
                         static_cast<long>(milliseconds % 1000) * 1'000'000};
    nanosleep(&pause, nullptr);
}

std::chrono::milliseconds removalPatience() noexcept {
    return std::chrono::milliseconds::zero();
}

std::optional<std::tm> localTime(std::time_t time) {
    std::tm local{};
    return localtime_r(&time, &local) == nullptr ? std::nullopt : std::optional(local);
}

void endAbnormally() noexcept {
    std::abort();
}

AString systemMessage(int code) {
    constexpr std::size_t kLongestText = 79;
    char buffer[256];
    const std::string_view text = strerror_r(code, buffer, sizeof buffer);
    return text.substr(0, kLongestText);
}

}  // namespace tkcore
