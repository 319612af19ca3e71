#include "tkcore/LongFileName.h"

#include <filesystem>
#include <system_error>

namespace tkcore {

namespace {

namespace fs = std::filesystem;

fs::path toPath(const LongFileName& file) {
    return {VEL_ANSI(file.FilePath())};
}

}  // namespace

LongFileName::LongFileName(const AString& text) {
    const fs::path given(VEL_ANSI(text));
    path = AString((given.is_absolute() ? given : fs::current_path() / given).string());
}

void LongFileName::MakeItDirectory() {
    if (path) {
        *path = AString((toPath(*this) / "").string());
    }
}

bool LongFileName::IsDirectory() const {
    return LFN_IsExistingDirectory(*this);
}

const AString& LongFileName::FilePath() const noexcept {
    static const AString kNoPath;
    return path ? *path : kNoPath;
}

bool LFN_CreateDirectory(const LongFileName& directory) {
    std::error_code error;
    return directory.IsInitialized() && fs::create_directory(toPath(directory), error);
}

bool LFN_IsExistingDirectory(const LongFileName& directory) {
    std::error_code error;
    return directory.IsInitialized() && fs::is_directory(toPath(directory), error);
}

bool LFN_Delete(const LongFileName& file) {
    std::error_code error = std::make_error_code(std::errc::invalid_argument);
    if (file.IsInitialized()) {
        fs::remove_all(toPath(file), error);
    }
    return !error;
}

}  // namespace tkcore
