#include "tkcore/files/inside/Renaming.windows.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace tkcore {

namespace {

// Since Windows 10 version 1607; the compiler's headers may be older.
constexpr auto kRenameWithFlags = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD kReplaces = 1;
constexpr DWORD kSparesReaders = 2;

DWORD rename(HANDLE file, FILE_INFO_BY_HANDLE_CLASS how, DWORD flags, const std::wstring& path) {
    std::vector<std::byte> room(sizeof(FILE_RENAME_INFO) + path.size() * sizeof(wchar_t));
    FILE_RENAME_INFO renaming{};
    renaming.FileNameLength = static_cast<DWORD>(path.size() * sizeof(wchar_t));
    std::memcpy(room.data(), &renaming, sizeof renaming);
    std::memcpy(room.data(), &flags, sizeof flags);  // its lowest byte is ReplaceIfExists
    std::memcpy(room.data() + offsetof(FILE_RENAME_INFO, FileName), path.data(),
                renaming.FileNameLength);
    const bool isDone =
        SetFileInformationByHandle(file, how, room.data(), static_cast<DWORD>(room.size())) != 0;
    return isDone ? 0 : GetLastError();
}

}  // namespace

DWORD renameOpenFile(HANDLE file, const std::wstring& path, bool mayReplace) {
    if (!mayReplace) {
        return rename(file, FileRenameInfo, 0, path);
    }
    // A system or a disk that cannot do it fails with various errors.
    return rename(file, kRenameWithFlags, kReplaces | kSparesReaders, path) == 0
               ? 0
               : rename(file, FileRenameInfo, kReplaces, path);
}

bool isOpenElsewhere(DWORD error) noexcept {
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
}

}  // namespace tkcore
