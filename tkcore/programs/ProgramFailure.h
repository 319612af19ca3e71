#pragma once

#include <string>

#include "tkcore/text/AString.h"

// What the system's codes mean to a person.

namespace tkcore {

/// What an exit code says beside its number, as "an end by SIGXFSZ, the limit on the size of
/// files"; empty for a number that is the program's own.
AString meaningOfExitCode(int code);

/// What kept the program of that name, as findProgram takes it, from its start, beside the text for
/// the system's error code; empty if there is nothing to say.
AString obstacleToStart(const std::string& name, int error);

}  // namespace tkcore
