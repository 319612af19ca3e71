#pragma once

#include <chrono>
#include <functional>

#include "tkcore/text/AString.h"

namespace tkcore {

/// How many threads the machine runs at once; 0 where that is unknown.
unsigned hardwareThreads() noexcept;

/// Pauses the caller; a signal that arrives meanwhile may end the pause.
void sleepMilliseconds(unsigned milliseconds);

/// For how long it is worth trying to remove or replace what others may hold open for a moment;
/// none where that keeps nothing from it.
std::chrono::milliseconds removalPatience() noexcept;

/// Tries to remove or replace something, for so long, until that has succeeded or is in vain.
void tryForAMoment(const std::function<bool()>& isSettled);

/// Ends the process at once, as one that has failed beyond repair (SIGABRT, or exit code 3), and
/// without a word on its streams.
[[noreturn]] void endAbnormally() noexcept;

/// The system's text for one of its error codes, cut off after 79 bytes.
AString systemMessage(int code);

}  // namespace tkcore
