#include "tkcore/programs/inside/ProgramPath.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace tkcore {

const ProgramErrors kProgramErrors{ENOENT, EACCES, EPERM};

ProgramPlaces placesOfProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return {{userPath(AString(name))}};
    }
    ProgramPlaces places{{}, true};
    const char* variable = std::getenv("PATH");
    std::string_view remaining = variable == nullptr ? "" : variable;
    while (!name.empty() && !remaining.empty()) {
        const std::string_view folder = remaining.substr(0, remaining.find(':'));
        remaining.remove_prefix(std::min(folder.size() + 1, remaining.size()));
        if (!folder.empty()) {
            places.paths.push_back(LongFileName(AString(folder)).in(AString(name)));
        }
    }
    return places;
}

bool mayBeStarted(const LongFileName& file, const PathStatus& status) {
    return status.kind == PathStatus::Kind::kFile && access(VEL_ANSI(file).c_str(), X_OK) == 0;
}

LongFileName ourProgram() {
    return LongFileName("/proc/self/exe");
}

}  // namespace tkcore
