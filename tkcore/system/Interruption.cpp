#include "tkcore/system/Interruption.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <utility>

namespace tkcore {

namespace {

constexpr int kNone = 0;
constexpr int kTooLate = -1;

// Atomic: one step decides whether a request or the point of no return came first.
std::atomic<int> noted = kNone;
std::atomic<bool> isRequested = false;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "a signal's handler writes to them");

std::function<void()> beforeSuspension = [] {};
std::function<void()> afterSuspension = [] {};

}  // namespace

Interrupted::Interrupted(int signal)
    : std::runtime_error("interrupted by signal " + std::to_string(signal)) {}

int interruption() noexcept {
    return std::max(noted.load(), kNone);
}

bool isEndRequested() noexcept {
    return isRequested;
}

void suspendWith(std::function<void()> beforeIt, std::function<void()> afterIt) {
    beforeSuspension = std::move(beforeIt);
    afterSuspension = std::move(afterIt);
}

void throwIfInterrupted() {
    suspendIfAsked(beforeSuspension, afterSuspension);
    if (const int signal = interruption(); signal != kNone) {
        throw Interrupted(signal);
    }
}

void passPointOfNoReturn() {
    int found = kNone;
    if (!noted.compare_exchange_strong(found, kTooLate) && found != kTooLate) {
        throw Interrupted(found);
    }
}

void noteRequestToEnd(int signal) noexcept {
    int found = kNone;
    noted.compare_exchange_strong(found, signal);
    isRequested = true;
}

void forgetRequestsToEnd() noexcept {
    noted = kNone;
    isRequested = false;
}

}  // namespace tkcore
