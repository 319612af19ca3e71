#include "tkcore/Path.h"

#include <boost/filesystem.hpp>

namespace tkcore {

namespace fs = boost::filesystem;

fs::path toPath(const AString& text) {
    return {VEL_ANSI(text)};
}

fs::path pathIn(const fs::path& folder, const fs::path& name) {
    return folder / name;
}

AString pathText(const fs::path& path) {
    return path.native();
}

AString absoluteText(const AString& text) {
    const fs::path given = toPath(text);
    return given.is_absolute() ? text : pathText(fs::current_path() / given);
}

std::string portablePath(std::string path) {
    return path;
}

}  // namespace tkcore
