#include "tkcore/files/FileCopy.h"

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/files/inside/Renaming.windows.h"
#include "tkcore/system/Handle.windows.h"
#include "tkcore/system/System.h"
#include "tkcore/system/SystemError.windows.h"

namespace tkcore {

namespace {

/// Opens a file, folder or link with the rights to delete and rename it.
Handle openToMove(const std::wstring& path) {
    return Handle(CreateFileW(path.c_str(), DELETE | SYNCHRONIZE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

/// Returns 0, or the system's error code.
DWORD move(const std::wstring& from, const std::wstring& to) {
    const Handle file = openToMove(from);
    if (!file) {
        return GetLastError();
    }
    const DWORD error = renameOpenFile(file.get(), to, true);
    // The system does not replace a directory; an empty one is removed first.
    return error != 0 && RemoveDirectoryW(to.c_str()) != 0 ? renameOpenFile(file.get(), to, true)
                                                           : error;
}

}  // namespace

void moveFile(const LongFileName& source, const LongFileName& target) {
    const std::wstring from = nativePath(source, "move");
    const std::wstring to = nativePath(target, "replace");
    DWORD error = 0;
    tryForAMoment([&] {
        error = move(from, to);
        return !isOpenElsewhere(error);
    });
    if (error != 0) {
        throwPathFailure(systemError(error), "move", source, " to " + VEL_ANSI(target));
    }
}

void requireReplaceableFile(const LongFileName& target) {
    const std::wstring native = nativePath(target, "replace");
    const DWORD attributes = GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return;
    }
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        throwPathFailure(systemError(ERROR_ACCESS_DENIED), "replace", target);
    }
    const Handle file = openToMove(native);
    const DWORD error = GetLastError();
    if (!file && isOpenElsewhere(error)) {
        throw OpenElsewhere(static_cast<int>(error), std::system_category(),
                            "cannot replace " + VEL_ANSI(target));
    }
}

}  // namespace tkcore
