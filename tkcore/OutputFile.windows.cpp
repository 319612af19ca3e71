#include "tkcore/OutputFile.h"

#include <algorithm>

#include "tkcore/Handle.windows.h"
#include "tkcore/NativePath.windows.h"

namespace tkcore {

namespace {

constexpr std::uint32_t kAnyWrite = 0222;

DWORD dispositionFor(OutputFile::IfThere ifThere) {
    switch (ifThere) {
        case OutputFile::IfThere::kFail:
            return CREATE_NEW;
        case OutputFile::IfThere::kAppend:
            return OPEN_ALWAYS;
        case OutputFile::IfThere::kTruncate:
        default:
            return CREATE_ALWAYS;
    }
}

}  // namespace

struct OutputFile::OpenFile final {
    Handle handle;
};

OutputFile::OutputFile(const std::string& filePath, IfThere ifThere, std::uint32_t permissions)
    : path(filePath), file(std::make_unique<OpenFile>()) {
    // The right to append alone makes each write go to the end of the file at that moment.
    const bool appends = ifThere == IfThere::kAppend;
    const DWORD access = appends ? FILE_APPEND_DATA | SYNCHRONIZE : GENERIC_WRITE;
    const DWORD sharing =
        FILE_SHARE_READ | (appends ? FILE_SHARE_WRITE | FILE_SHARE_DELETE : DWORD{0});
    const DWORD attributes =
        (permissions & kAnyWrite) == 0 ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL;
    file->handle = Handle(CreateFileW(nativePath(path, "create").c_str(), access, sharing, nullptr,
                                      dispositionFor(ifThere), attributes, nullptr));
    if (!file->handle) {
        throwSystemError(GetLastError(), "cannot create " + path);
    }
}

OutputFile::~OutputFile() = default;

OutputFile::OutputFile(OutputFile&&) noexcept = default;

void OutputFile::write(std::span<const char> bytes) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 30U;  // the system counts in 32 bits
    while (!bytes.empty()) {
        DWORD count = 0;
        if (WriteFile(file->handle.get(), bytes.data(),
                      static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce)), &count,
                      nullptr) == 0) {
            throwSystemError(GetLastError(), "cannot write " + path);
        }
        bytes = bytes.subspan(count);
    }
}

}  // namespace tkcore
