#pragma once

#include <vector>

#include "tkcore/text/AString.h"

namespace velextracta {

/// What the options of one run ask for. The design file and the output path are not options: they
/// are always the last two arguments.
struct CommandLine final {
    bool zip = false;           // pack into one archive instead of moving
    bool standardViews = true;  // false: the cell selection
    std::vector<tkcore::AString> nets;
    std::vector<tkcore::AString> addedFiles;
};

/// Scans the arguments before the last two for options, the program's own name included. Ignores
/// arguments that are no options. The value of an option is also scanned as an argument.
CommandLine scanCommandLine(int argc, char* argv[]);

/// Whether the argument has the form of one of the options.
bool isAnyOption(const tkcore::AString& argument);

}  // namespace velextracta
