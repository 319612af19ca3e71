#pragma once

#include <string>

#include "tkcore/text/AString.h"

// Explains the system's codes to a person.

namespace tkcore {

/// The meaning of an exit code, such as "an end by SIGXFSZ, the limit on the size of files"; empty
/// for a code that the program itself chose.
AString meaningOfExitCode(int code);

/// Why the program of that name, which findProgram() looks up, could not be started, in addition to
/// the text of the system's error code; empty if there is nothing to add.
AString obstacleToStart(const std::string& name, int error);

}  // namespace tkcore
