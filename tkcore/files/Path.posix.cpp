#include "tkcore/files/Path.h"

#include <boost/filesystem.hpp>

namespace tkcore {

namespace fs = boost::filesystem;

fs::path toPath(const AString& text) {
    return {VEL_ANSI(text)};
}

AString pathText(const fs::path& path) {
    return path.native();
}

std::optional<AString> absoluteText(const AString& text) {
    const fs::path given = toPath(text);
    if (given.is_absolute()) {
        return text;
    }
    boost::system::error_code error;
    const fs::path here = fs::current_path(error);
    return error ? std::nullopt : std::optional(pathText(here / given));
}

bool isReservedText(const AString& /*text*/) {
    return false;
}

AString pathForPrograms(const AString& text) {
    return text;
}

std::string portablePath(std::string path) {
    return path;
}

}  // namespace tkcore
