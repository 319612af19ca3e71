#include "tkcore/ProgramPath.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <boost/filesystem.hpp>
#include <unistd.h>

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

/// 0 if the file can be started, else the reason.
int startError(const fs::path& file) {
    boost::system::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (error) {
        return error.value();
    }
    if (!fs::is_regular_file(status)) {
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
        const fs::path candidate = fs::absolute(std::string(directory), error) / name;
        if (startError(candidate) == 0) {
            path = candidate.string();
            return 0;
        }
        // A folder that may not be looked into holds no program for us.
        if (fs::exists(candidate, error)) {
            result = EACCES;
        }
    }
    return result;
}

}  // namespace tkcore
