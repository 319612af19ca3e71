#pragma once

#include <string>
#include <string_view>

#include "tkcore/text/AString.h"

namespace velextracta {

/// What the program can be asked to do, in few enough lines for any terminal.
std::string_view usage();

/// Its first lines, for a user who has given too few arguments.
std::string_view shortUsage();

/// The program's version, its libraries' and how it was built.
std::string versionText();

/// What to say of an option that stands where the design or the output is expected; empty if there
/// is none.
tkcore::AString misplacedOption(const tkcore::AString& design, const tkcore::AString& output);

}  // namespace velextracta
