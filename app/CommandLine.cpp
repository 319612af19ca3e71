#include "app/CommandLine.h"

#include <algorithm>
#include <array>

#include "tkcore/report/Assertion.h"

namespace velextracta {

using tkcore::AString;

namespace {

constexpr std::array kOptions{"z", "cell", "n", "add"};

bool isOption(const AString& argument, const AString& name) {
    return argument.MatchNoCase("/" + name) || argument.MatchNoCase("-" + name);
}

/// Appends the comma-separated pieces of the argument after position ii.
void appendValue(int argc, char* argv[], int ii, std::vector<AString>& list) {
    VEL_ASSERT("VelExtracta", argc > ii);
    const std::vector<AString> pieces = AString(argv[ii + 1]).TokenizeString(",", false);
    list.insert(list.end(), pieces.begin(), pieces.end());
}

}  // namespace

bool isAnyOption(const AString& argument) {
    return std::ranges::any_of(kOptions,
                               [&](const char* name) { return isOption(argument, name); });
}

CommandLine scanCommandLine(int argc, char* argv[]) {
    CommandLine options;
    for (int ii = 0; ii <= argc - 3; ++ii) {
        const AString argument(argv[ii]);
        if (isOption(argument, "z")) {
            options.zip = true;
        }
        if (isOption(argument, "cell")) {
            options.standardViews = false;
        }
        if (isOption(argument, "n")) {
            appendValue(argc, argv, ii, options.nets);
        }
        if (isOption(argument, "add")) {
            appendValue(argc, argv, ii, options.addedFiles);
        }
    }
    return options;
}

}  // namespace velextracta
