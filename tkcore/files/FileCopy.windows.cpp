#include "tkcore/files/FileCopy.h"

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/system/SystemError.windows.h"

namespace tkcore {

void moveFile(const LongFileName& source, const LongFileName& target) {
    const std::wstring from = nativePath(source, "move");
    const std::wstring to = nativePath(target, "replace");
    const auto isMoved = [&] {
        return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
    };
    if (isMoved()) {
        return;
    }
    // A directory is never replaced by itself; it must be empty.
    const DWORD error = GetLastError();
    if (RemoveDirectoryW(to.c_str()) == 0 || !isMoved()) {
        throwSystemError(error, "cannot move " + VEL_ANSI(source) + " to " + VEL_ANSI(target));
    }
}

}  // namespace tkcore
