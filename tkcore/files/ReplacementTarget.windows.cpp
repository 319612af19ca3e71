#include "tkcore/files/ReplacementTarget.h"

#include <algorithm>
#include <string>

#include <boost/filesystem.hpp>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/Path.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/files/inside/Renaming.windows.h"
#include "tkcore/system/Handle.windows.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/System.h"
#include "tkcore/system/SystemError.windows.h"

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

class WindowsTarget final : public ReplacementTarget {
public:
    explicit WindowsTarget(const LongFileName& filePath);
    ~WindowsTarget() override;

    void writeAt(std::uint64_t offset, const char* data, std::size_t size) override;
    void bringToDisk() override;
    void putInPlace(const std::function<void()>& beforeIt) override;

private:
    void findPlace();
    void openFile();
    /// Sets whether the system removes the file when we close it, even if we are killed.
    bool vanishes(bool wanted) const noexcept;
    /// Moves the file to its place. On failure it is still removed when closed. Returns 0 or the
    /// system's error code.
    DWORD rename() const;
    [[noreturn]] void fail(DWORD error, const char* action) const {
        throwPathFailure(systemError(error), action, path);
    }

    LongFileName path;
    fs::path place;  // after the links have been followed
    Handle file;     // in the same folder
    bool isReplacing = false;
};

WindowsTarget::WindowsTarget(const LongFileName& filePath) : path(filePath) {
    findPlace();
    openFile();
}

WindowsTarget::~WindowsTarget() {
    if (file) {
        vanishes(true);
    }
}

void WindowsTarget::findPlace() {
    nativePath(path, "create");  // refuses paths that cannot be a file's
    place = toPath(followLinks(path));
    if (place.empty() || place.filename_is_dot() || place.filename_is_dot_dot() ||
        !place.has_filename()) {
        fail(ERROR_INVALID_NAME, "create");
    }
    // The current directory may change.
    place = withoutLimit(fullPath(place.native()));
    // Some file systems report this only at the renaming, after all the packing.
    if (isTooLong(LongFileName(pathText(place)))) {
        fail(ERROR_FILENAME_EXCED_RANGE, "create");
    }
    if (isDirectory(LongFileName(pathText(place)))) {
        fail(ERROR_ACCESS_DENIED, "replace the directory");
    }
    const Handle older(CreateFileW(place.c_str(), GENERIC_WRITE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                   OPEN_EXISTING, 0, nullptr));
    const DWORD error = GetLastError();
    if (older && GetFileType(older.get()) != FILE_TYPE_DISK) {
        fail(ERROR_NOT_SUPPORTED, "replace what is no regular file,");
    }
    isReplacing = older || isThere(LongFileName(pathText(place)));
    // A reader who has it open now may have closed it by the end.
    if (!older && error != ERROR_FILE_NOT_FOUND && error != ERROR_SHARING_VIOLATION) {
        fail(error, isReplacing ? "replace" : "create");
    }
}

void WindowsTarget::openFile() {
    DWORD error = ERROR_FILE_EXISTS;
    for (int attempt = 0; attempt < kMostNames && error == ERROR_FILE_EXISTS; ++attempt) {
        const fs::path candidate =
            withoutLimit((place.parent_path() / randomHiddenName()).native());
        file = Handle(CreateFileW(candidate.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_DELETE,
                                  nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        error = GetLastError();
        if (file) {
            vanishes(true);
            return;
        }
    }
    fail(error, "create");
}

bool WindowsTarget::vanishes(bool wanted) const noexcept {
    FILE_DISPOSITION_INFO disposition{};
    disposition.DeleteFile = wanted ? TRUE : FALSE;
    return SetFileInformationByHandle(file.get(), FileDispositionInfo, &disposition,
                                      sizeof disposition) != 0;
}

void WindowsTarget::writeAt(std::uint64_t offset, const char* data, std::size_t size) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 30U;  // the system counts in 32 bits
    std::size_t done = 0;
    while (done < size) {
        OVERLAPPED position{};
        position.Offset = static_cast<DWORD>(offset + done);
        position.OffsetHigh = static_cast<DWORD>((offset + done) >> 32U);
        DWORD count = 0;
        if (WriteFile(file.get(), data + done,
                      static_cast<DWORD>(std::min(size - done, kMostAtOnce)), &count,
                      &position) == 0) {
            fail(GetLastError(), "write");
        }
        done += count;
    }
}

void WindowsTarget::bringToDisk() {
    if (FlushFileBuffers(file.get()) == 0) {
        fail(GetLastError(), "write");
    }
}

DWORD WindowsTarget::rename() const {
    const DWORD error =
        vanishes(false) ? renameOpenFile(file.get(), place.native(), isReplacing) : GetLastError();
    if (error != 0) {
        vanishes(true);
    }
    return error;
}

void WindowsTarget::putInPlace(const std::function<void()>& beforeIt) {
    beforeIt();
    DWORD error = 0;
    tryForAMoment([&] {
        error = rename();
        return !isOpenElsewhere(error);
    });
    if (error != 0) {
        fail(error, "replace");
    }
    file.close();
}

}  // namespace

std::unique_ptr<ReplacementTarget> openReplacementTarget(const LongFileName& path) {
    return std::make_unique<WindowsTarget>(path);
}

}  // namespace tkcore
