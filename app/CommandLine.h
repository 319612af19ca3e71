#pragma once

#include <vector>

#include "tkcore/text/AString.h"

namespace velextracta {

/// What the options of one run ask for. The design file and the output path are not among them:
/// they are always the last two arguments.
struct CommandLine final {
    bool zip = false;           // pack into one archive instead of moving
    bool standardViews = true;  // false: the cell selection
    std::vector<tkcore::AString> nets;
    std::vector<tkcore::AString> addedFiles;
};

/// Scans the arguments before the last two for options, the program's own name included. What is
/// no option is passed over; the value of an option is scanned as an argument, too.
CommandLine scanCommandLine(int argc, char* argv[]);

/// Whether the argument reads like one of the options.
bool isAnyOption(const tkcore::AString& argument);

}  // namespace velextracta
