#pragma once

#include <chrono>
#include <ctime>
#include <functional>
#include <optional>

#include "tkcore/text/AString.h"

namespace tkcore {

/// How many threads the machine runs at once; 0 where that is unknown.
unsigned hardwareThreads() noexcept;

/// Pauses the caller; a signal that arrives meanwhile may end the pause.
void sleepMilliseconds(unsigned milliseconds);

/// How long to try again to remove or replace a file that others may hold open for a moment; zero
/// on systems where an open file can be removed.
std::chrono::milliseconds removalPatience() noexcept;

/// Calls the function until it returns true, but for no longer than that. It returns true once the
/// file is removed or replaced, or never will be.
void tryForAMoment(const std::function<bool()>& isSettled);

/// Date and time of the day on the clock of this system's time zone; none for a time that it cannot
/// say. The other members are not set everywhere.
std::optional<std::tm> localTime(std::time_t time);

/// Ends the process at once, as one that has failed beyond repair (SIGABRT, or exit code 3), and
/// without a word on its streams.
[[noreturn]] void endAbnormally() noexcept;

/// The system's text for one of its error codes, cut off after 79 bytes.
AString systemMessage(int code);

}  // namespace tkcore
