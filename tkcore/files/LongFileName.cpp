#include "tkcore/files/LongFileName.h"

#include <utility>

#include <boost/filesystem.hpp>

#include "tkcore/files/Path.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/files/inside/TreeRemoval.h"
#include "tkcore/system/System.h"

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

bool endsInSeparator(const std::wstring& text) {
    return text.ends_with(L'/') ||
           text.ends_with(static_cast<wchar_t>(fs::path::preferred_separator));
}

}  // namespace

LongFileName::LongFileName(const AString& text) : path(absoluteText(text)) {}

bool LongFileName::isReserved() const {
    return isReservedText(FilePath());
}

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

AString LongFileName::name() const {
    return endsInSeparator(FilePath().wide()) ? AString() : pathText(toPath(FilePath()).filename());
}

AString LongFileName::extension() const {
    return pathText(toPath(FilePath()).extension());
}

LongFileName LongFileName::folder() const {
    const AString text = pathText(toPath(FilePath()).parent_path());
    return text.empty() ? *this : LongFileName(text);  // the root has no parent
}

LongFileName LongFileName::in(const AString& fileName) const {
    if (!path) {
        return {};
    }
    LongFileName directory = *this;
    directory.MakeItDirectory();
    *directory.path += fileName;
    directory.isInFolder = !isInFolder && held != nullptr;
    return directory;
}

LongFileName LongFileName::heldOpen(std::shared_ptr<const OpenFolder> directory) const {
    LongFileName open = *this;
    open.held = std::move(directory);
    return open;
}

LongFileName userPath(const AString& text) {
    return text.empty() ? LongFileName() : LongFileName(text);
}

bool LFN_CreateDirectory(const LongFileName& directory) {
    boost::system::error_code error;
    return directory.IsInitialized() && fs::create_directory(toPath(directory), error);
}

bool LFN_IsExistingDirectory(const LongFileName& directory) {
    return isDirectory(directory);
}

bool LFN_Delete(const LongFileName& file) {
    if (!file.IsInitialized() || file.isReserved()) {
        return false;
    }
    bool isRemoved = false;
    tryForAMoment([&] { return isRemoved = !removeTree(file); });
    return isRemoved;
}

}  // namespace tkcore
