#include "tkcore/files/OutputFile.h"

#include <algorithm>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/files/inside/Renaming.windows.h"
#include "tkcore/system/Handle.windows.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/System.h"
#include "tkcore/system/SystemError.windows.h"

namespace tkcore {

namespace {

constexpr std::uint32_t kAnyWrite = 0222;

/// Makes the file, or opens it to append to it. Returns 0 or the system's error code. If
/// isOpenElsewhere() holds for the code, try again.
DWORD openToWrite(const std::wstring& path, OutputFile::IfThere ifThere, DWORD attributes,
                  Handle& file) {
    // With only the right to append, each write goes to the present end of the file.
    const bool appends = ifThere == OutputFile::IfThere::kAppend;
    const DWORD access = appends ? FILE_APPEND_DATA | SYNCHRONIZE : GENERIC_WRITE;
    const DWORD sharing =
        FILE_SHARE_READ | (appends ? FILE_SHARE_WRITE | FILE_SHARE_DELETE : DWORD{0});
    const bool isHeld =
        ifThere == OutputFile::IfThere::kReplace &&
        (DeleteFileW(path.c_str()) != 0 || GetLastError() == ERROR_SHARING_VIOLATION);
    file = Handle(CreateFileW(path.c_str(), access, sharing, nullptr,
                              appends ? OPEN_ALWAYS : CREATE_NEW, attributes, nullptr));
    const DWORD error = file ? 0 : GetLastError();
    return error == ERROR_FILE_EXISTS && isHeld ? ERROR_SHARING_VIOLATION : error;
}

}  // namespace

struct OutputFile::OpenFile final {
    Handle handle;
};

OutputFile::OutputFile(const LongFileName& filePath, IfThere ifThere, std::uint32_t permissions)
    : path(filePath), file(std::make_unique<OpenFile>()) {
    const DWORD attributes =
        (permissions & kAnyWrite) == 0 ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL;
    const std::wstring native = nativePath(path, "create");
    // A file that is deleted while somebody has it open exists until he closes it; until then the
    // system denies access.
    const bool mayBeDeleted = ifThere == IfThere::kReplace;
    DWORD error = 0;
    tryForAMoment([&] {
        error = openToWrite(native, ifThere, attributes, file->handle);
        const bool isHeld =
            mayBeDeleted ? isOpenElsewhere(error) : error == ERROR_SHARING_VIOLATION;
        return !isHeld || isEndRequested();
    });
    if (!file->handle) {
        throwPathFailure(systemError(error), "create", path);
    }
}

OutputFile::~OutputFile() = default;

void OutputFile::write(std::span<const char> bytes) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 30U;  // the system counts in 32 bits
    while (!bytes.empty()) {
        DWORD count = 0;
        if (WriteFile(file->handle.get(), bytes.data(),
                      static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce)), &count,
                      nullptr) == 0) {
            throwLastError("write", path);
        }
        bytes = bytes.subspan(count);
    }
}

}  // namespace tkcore
