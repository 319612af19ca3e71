#include "tkcore/programs/inside/ProgramPath.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

namespace {

/// 0 if the file can be started, else the reason.
int startError(const std::string& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return EACCES;
    }
    return access(file.c_str(), X_OK) == 0 ? 0 : errno;
}

}  // namespace

int findProgram(const std::string& name, std::string& path) {
    if (name.find('/') != std::string::npos) {
        path = VEL_ANSI(LongFileName(AString(name)));
        return startError(path);
    }
    const char* variable = std::getenv("PATH");
    std::string_view remaining = variable == nullptr ? "" : variable;
    int result = ENOENT;
    while (!name.empty() && !remaining.empty()) {
        const std::string_view directory = remaining.substr(0, remaining.find(':'));
        remaining.remove_prefix(std::min(directory.size() + 1, remaining.size()));
        if (directory.empty()) {
            continue;
        }
        const std::string candidate = VEL_ANSI(LongFileName(AString(directory)).in(AString(name)));
        struct stat status {};
        if (startError(candidate) == 0) {
            path = candidate;
            return 0;
        }
        // A folder that may not be looked into holds no program for us.
        if (stat(candidate.c_str(), &status) == 0) {
            result = EACCES;
        }
    }
    return result;
}

bool isThisProgram(const std::string& path) {
    struct stat ours {};
    struct stat other {};
    return stat("/proc/self/exe", &ours) == 0 && stat(path.c_str(), &other) == 0 &&
           ours.st_dev == other.st_dev && ours.st_ino == other.st_ino;
}

}  // namespace tkcore
