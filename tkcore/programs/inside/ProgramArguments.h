#pragma once

#include <span>
#include <string>
#include <vector>

#include "tkcore/text/AString.h"

// What VeltCreateProcess builds on.

namespace tkcore {

/// The arguments as the program is to see them: without the double quotes that wrap some, which are
/// paths.
std::vector<std::string> plainArguments(std::span<const AString> argv);

}  // namespace tkcore
