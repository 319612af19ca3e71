#include "tkcore/LongFileName.h"

#include <boost/filesystem.hpp>

#include "tkcore/Log.h"
#include "tkcore/Path.h"
#include "tkcore/PathStatus.h"
#include "tkcore/System.h"

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

fs::path toPath(const LongFileName& file) {
    return tkcore::toPath(file.FilePath());
}

bool endsInSeparator(const std::wstring& text) {
    return text.ends_with(L'/') ||
           text.ends_with(static_cast<wchar_t>(fs::path::preferred_separator));
}

/// What cannot be removed keeps nothing else from being removed.
void removeAll(const fs::path& path, boost::system::error_code& error) {
    fs::remove_all(path, error);
    if (!error) {
        return;
    }
    boost::system::error_code ignored;
    for (fs::directory_iterator entry(path, ignored), end; entry != end; entry.increment(ignored)) {
        fs::remove_all(entry->path(), ignored);
    }
    fs::remove_all(path, error);
}

}  // namespace

LongFileName::LongFileName(const AString& text) : path(absoluteText(text)) {}

void LongFileName::MakeItDirectory() {
    if (path && !endsInSeparator(path->wide())) {
        *path += "/";
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
    boost::system::error_code error = make_error_code(boost::system::errc::invalid_argument);
    if (directory.IsInitialized() && fs::create_directory(toPath(directory), error)) {
        return true;
    }
    // Without an error there was a directory already, which is not the one that was to be made.
    VelDebug(0, "error: cannot create directory %s: %s", directory.FilePath(),
             error ? error.message() : "it is there already");
    return false;
}

bool LFN_IsExistingDirectory(const LongFileName& directory) {
    return directory.IsInitialized() && isDirectory(toPath(directory));
}

bool LFN_Delete(const LongFileName& file) {
    boost::system::error_code error = make_error_code(boost::system::errc::invalid_argument);
    if (file.IsInitialized()) {
        tryForAMoment([&] {
            removeAll(toPath(file), error);
            return !error;
        });
    }
    if (error) {
        VelDebug(0, "error: cannot remove %s: %s", file.FilePath(), error.message());
    }
    return !error;
}

}  // namespace tkcore
