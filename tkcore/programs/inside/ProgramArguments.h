#pragma once

#include <span>
#include <string>
#include <vector>

#include "tkcore/text/AString.h"

// A part of VeltCreateProcess.

namespace tkcore {

/// The arguments in the form for the program. Those in double quotes are paths and lose the quotes.
std::vector<std::string> plainArguments(std::span<const AString> argv);

}  // namespace tkcore
