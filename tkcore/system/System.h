#pragma once

#include <chrono>
#include <ctime>
#include <functional>
#include <optional>

#include "tkcore/text/AString.h"

namespace tkcore {

/// How many threads the machine runs at once; 0 if unknown.
unsigned hardwareThreads() noexcept;

/// Pauses the caller. A signal may end the pause early.
void sleepMilliseconds(unsigned milliseconds);

/// How long to retry the removal or replacement of a file that others may have open for a moment;
/// zero on systems where an open file can be removed.
std::chrono::milliseconds removalPatience() noexcept;

/// Repeats the function until it returns true, but not longer than removalPatience(). It returns
/// true if the file is removed or replaced, or if another try is useless.
void tryForAMoment(const std::function<bool()>& isSettled);

/// Date and time of day in the system's time zone; none if the system cannot convert the time. The
/// other members are not set on every system.
std::optional<std::tm> localTime(std::time_t time);

/// Ends the process at once and abnormally (SIGABRT, or exit code 3), with nothing on its streams.
[[noreturn]] void endAbnormally() noexcept;

/// The system's text for an error code, cut off after 79 bytes.
AString systemMessage(int code);

}  // namespace tkcore
