#include "tkcore/files/PrivateDirectory.h"

#include <system_error>

#include <boost/filesystem.hpp>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/Path.h"
#include "tkcore/files/inside/OpenFolder.windows.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/files/inside/TreeRemoval.h"
#include "tkcore/system/System.h"
#include "tkcore/system/SystemError.windows.h"

namespace tkcore {

namespace fs = boost::filesystem;

namespace {

Handle openFolder(const std::wstring& path) {
    // The right to list, without letting others delete or rename it.
    return Handle(CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

}  // namespace

struct PrivateDirectory::System final {
    std::shared_ptr<OpenFolder> folder = std::make_shared<OpenFolder>();
};

PrivateDirectory::PrivateDirectory(const LongFileName& path) : system(std::make_unique<System>()) {
    // Allocate memory before creating the directory: after a failure nobody would remove it.
    const std::wstring native = nativePath(path, "create directory");
    heldPath = path.heldOpen(system->folder);
    if (CreateDirectoryW(native.c_str(), nullptr) == 0) {
        const DWORD error = GetLastError();
        throwPathFailure(systemError(error), "create directory", path);
    }
    system->folder->handle = openFolder(native);
    if (!system->folder->handle) {
        const DWORD error = GetLastError();
        RemoveDirectoryW(native.c_str());
        throwPathFailure(systemError(error), "open the new directory", path);
    }
}

PrivateDirectory::~PrivateDirectory() = default;

PrivateDirectory::Name PrivateDirectory::name() const {
    BY_HANDLE_FILE_INFORMATION ours{};
    BY_HANDLE_FILE_INFORMATION there{};
    const std::wstring native = toPath(heldPath).native();
    const Handle opened = openFolder(native);
    const DWORD error = GetLastError();
    if (!opened && error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
        return Name::kOurs;  // as long as we hold it open, nobody else can take its name
    }
    if (!opened || GetFileInformationByHandle(opened.get(), &there) == 0 ||
        GetFileInformationByHandle(system->folder->handle.get(), &ours) == 0) {
        return Name::kNothing;
    }
    const bool isOurs = ours.dwVolumeSerialNumber == there.dwVolumeSerialNumber &&
                        ours.nFileIndexHigh == there.nFileIndexHigh &&
                        ours.nFileIndexLow == there.nFileIndexLow;
    return isOurs ? Name::kOurs : Name::kOther;
}

std::vector<AString> PrivateDirectory::contents() const {
    std::vector<AString> names;
    boost::system::error_code error;
    fs::directory_iterator entry(toPath(heldPath), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        names.push_back(pathText(entry->path().filename()));
    }
    if (error) {
        throwPathFailure(error, "list directory", heldPath);
    }
    return names;
}

void PrivateDirectory::remove() {
    if (name() == Name::kOther) {
        throwPathFailure(std::make_error_code(std::errc::no_such_file_or_directory),
                         "remove directory", heldPath);
    }
    std::error_code error;
    tryForAMoment([&] {
        error.clear();
        for (const AString& entry : contents()) {
            if (const std::error_code reason = removeTree(heldPath.in(entry)); reason) {
                error = reason;
            }
        }
        return !error;
    });
    // From here on somebody else can take its name; an empty directory there would be removed.
    system->folder->handle.close();
    // Wait only once: at the end of a session there is little time.
    const bool wasPatient = static_cast<bool>(error);
    const fs::path native = toPath(heldPath);
    tryForAMoment([&] {
        const bool isRemoved = RemoveDirectoryW(native.c_str()) != 0;
        const DWORD reason = GetLastError();
        if (!isRemoved && !error) {
            error = std::error_code(static_cast<int>(reason), std::system_category());
        } else if (isRemoved) {
            error.clear();
        }
        return isRemoved || wasPatient || reason == ERROR_FILE_NOT_FOUND;
    });
    if (error) {
        throwPathFailure(error, "remove directory", heldPath);
    }
}

}  // namespace tkcore
