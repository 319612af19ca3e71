#pragma once

#include <optional>

#include "tkcore/programs/Process.h"

// The end of a program.

namespace tkcore {

/// Checks whether the program has ended, and notes it; false on a failure of the system.
bool lookForEnd(StartedProcess& process) noexcept;

/// The exit code; none until the end has been noted.
std::optional<int> notedExitCode(const StartedProcess& process) noexcept;

}  // namespace tkcore
