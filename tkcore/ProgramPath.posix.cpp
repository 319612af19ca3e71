#include "tkcore/ProgramPath.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <boost/filesystem.hpp>
#include <sys/stat.h>
#include <unistd.h>

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

/// 0 if the file can be started, else the reason.
int startError(const fs::path& file) {
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
    boost::system::error_code error;
    if (name.find('/') != std::string::npos) {
        path = fs::absolute(name, error).string();
        return error ? error.value() : startError(path);
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
        const fs::path folder = fs::absolute(std::string(directory), error);
        const fs::path candidate = folder / name;
        struct stat status {};
        if (error) {
            continue;  // relative to a current directory that is gone
        }
        if (startError(candidate) == 0) {
            path = candidate.string();
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
