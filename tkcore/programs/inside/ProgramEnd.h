#pragma once

#include <optional>

#include "tkcore/programs/Process.h"

// What is known of a program's end.

namespace tkcore {

/// Looks whether the program has come to its own end; false if the system does not say.
bool lookForEnd(StartedProcess& process) noexcept;

/// None until its end has been noted.
std::optional<int> notedExitCode(const StartedProcess& process) noexcept;

}  // namespace tkcore
