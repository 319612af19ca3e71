#include "tkcore/files/InputFile.h"

#include <algorithm>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/system/Handle.windows.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/System.h"
#include "tkcore/system/SystemError.windows.h"

namespace tkcore {

namespace {

constexpr std::uint32_t kFilePermissions = 0644;
constexpr std::uint32_t kDirectoryPermissions = 0755;
constexpr std::uint32_t kAnyWrite = 0222;

std::time_t secondsSince1970(const FILETIME& time) {
    constexpr std::int64_t kTicksInSecond = 10'000'000;
    constexpr std::int64_t kSecondsFrom1601 = 11'644'473'600;
    const std::uint64_t ticks =
        (std::uint64_t{time.dwHighDateTime} << 32U) | std::uint64_t{time.dwLowDateTime};
    return static_cast<std::int64_t>(ticks) / kTicksInSecond - kSecondsFrom1601;
}

}  // namespace

struct InputFile::OpenFile final {
    explicit OpenFile(const LongFileName& path) {
        const std::wstring native = nativePath(path, "open");
        DWORD error = 0;
        tryForAMoment([&] {
            // FILE_FLAG_BACKUP_SEMANTICS is needed to open directories.
            handle = Handle(CreateFileW(
                native.c_str(), GENERIC_READ,
                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
            error = GetLastError();
            return handle || error != ERROR_SHARING_VIOLATION || isEndRequested();
        });
        if (!handle) {
            throwPathFailure(systemError(error), "open", path);
        }
    }

    Handle handle;
};

InputFile::~InputFile() = default;

InputFile::InputFile(const LongFileName& filePath)
    : path(filePath), file(std::make_unique<OpenFile>(filePath)) {
    BY_HANDLE_FILE_INFORMATION status{};
    if (GetFileType(file->handle.get()) != FILE_TYPE_DISK) {
        throwPathFailure(systemError(ERROR_NOT_SUPPORTED), "read", path,
                         ", which is neither a file nor a directory");
    }
    if (GetFileInformationByHandle(file->handle.get(), &status) == 0) {
        throwLastError("open", path);
    }
    directory = (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!directory) {
        bytes = (std::uint64_t{status.nFileSizeHigh} << 32U) | status.nFileSizeLow;
    }
    modified = secondsSince1970(status.ftLastWriteTime);
    permissionBits = directory ? kDirectoryPermissions : kFilePermissions;
    if (!directory && (status.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
        permissionBits &= ~kAnyWrite;
    }
}

void InputFile::rewind() {
    if (SetFilePointerEx(file->handle.get(), LARGE_INTEGER{}, nullptr, FILE_BEGIN) == 0) {
        throwLastError("read again", path);
    }
}

std::size_t InputFile::readSome(void* destination, std::size_t size) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 30U;  // the system counts in 32 bits
    DWORD count = 0;
    if (ReadFile(file->handle.get(), destination, static_cast<DWORD>(std::min(size, kMostAtOnce)),
                 &count, nullptr) == 0) {
        throwLastError("read", path);
    }
    return count;
}

}  // namespace tkcore
