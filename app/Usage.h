#pragma once

#include <string>
#include <string_view>

#include "tkcore/text/AString.h"

namespace velextracta {

/// The text of --help, short enough for any terminal.
std::string_view usage();

/// Its first lines, for a user who has given too few arguments.
std::string_view shortUsage();

/// The versions of the program and its libraries, and how it was built.
std::string versionText();

/// A message about an option in the place of the design or the output; empty if there is none.
tkcore::AString misplacedOption(const tkcore::AString& design, const tkcore::AString& output);

}  // namespace velextracta
