#include "tkcore/files/ReplacementTarget.h"

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/files/PathStatus.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

namespace {

constexpr mode_t kNewFilePermissions = 0666;  // the system takes off the umask
constexpr mode_t kPermissionBits = 07777;
constexpr std::uint64_t kStepToDisk = std::uint64_t{8} << 20U;

bool descriptorPathsWork(const FileDescriptor& descriptor) {
    return ::access(descriptorPath(descriptor).c_str(), F_OK) == 0;
}

bool isSame(const struct stat& left, const struct stat& right) {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

class PosixTarget final : public ReplacementTarget {
public:
    explicit PosixTarget(const LongFileName& filePath);
    ~PosixTarget() override;

    void writeAt(std::uint64_t offset, const char* data, std::size_t size) override;
    void bringToDisk() override;
    void putInPlace(const std::function<void()>& beforeIt) override;

private:
    void findPlace();
    /// The file in the place, if any. Throws if it may not be replaced.
    std::optional<struct stat> lookAtPlace() const;
    void openFile();
    void openNamed();
    void removeTemporaryName() noexcept;
    /// Gives an unnamed file the name; false, with errno, on failure.
    bool link(const std::string& newName) const;
    /// Moves a file with a temporary name to an empty place; false, with errno, on failure.
    bool renameToNothing();
    void linkToTemporaryName();
    void copyToNamed();
    void takeFreePlace();
    void replace(const struct stat& older);
    [[noreturn]] void fail(int error, const char* action) const {
        throwPathFailure({error, std::generic_category()}, action, path);
    }

    LongFileName path;
    LongFileName folderPath;    // after following links
    std::string name;           // in that folder
    std::string temporaryName;  // to be removed; empty if there is none
    FileDescriptor folder;
    FileDescriptor file;
    mode_t permissions = kNewFilePermissions;
    std::uint64_t givenToDisk = 0;  // bytes from the start of the file
    bool isReplacing = false;       // replaces an older file and keeps its permissions
};

PosixTarget::PosixTarget(const LongFileName& filePath) : path(filePath) {
    findPlace();
    openFile();
}

PosixTarget::~PosixTarget() {
    removeTemporaryName();
}

void PosixTarget::removeTemporaryName() noexcept {
    if (!temporaryName.empty() && ::unlinkat(folder.get(), temporaryName.c_str(), 0) == 0) {
        temporaryName.clear();
    }
}

void PosixTarget::findPlace() {
    const LongFileName place = followLinks(path);
    name = VEL_ANSI(place.name());
    folderPath = place.folder();
    folder = FileDescriptor(::open(VEL_ANSI(folderPath).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder || name.empty()) {
        fail(folder ? EISDIR : errno, "create");
    }
    if (const std::optional<struct stat> older = lookAtPlace()) {
        // Opening is the only test with the same result on every system.
        const FileDescriptor tried(
            ::openat(folder.get(), name.c_str(), O_WRONLY | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
        if (!tried) {
            fail(errno, "replace");
        }
        permissions = older->st_mode & kPermissionBits;
        isReplacing = true;
    }
}

std::optional<struct stat> PosixTarget::lookAtPlace() const {
    struct stat found {};
    if (::fstatat(folder.get(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) {
            fail(errno, "create");
        }
        return std::nullopt;
    }
    if (S_ISLNK(found.st_mode)) {
        fail(ELOOP, "create");
    }
    if (!S_ISREG(found.st_mode)) {
        fail(S_ISDIR(found.st_mode) ? EISDIR : ENOTSUP, "replace what is no regular file,");
    }
    return found;
}

void PosixTarget::openFile() {
    // The system removes a file without a name when the process ends, even by a kill.
    file = FileDescriptor(::openat(folder.get(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, permissions));
    if (!file || !descriptorPathsWork(file)) {
        openNamed();
    }
}

void PosixTarget::openNamed() {
    for (int attempt = 0; attempt < kMostNames; ++attempt) {
        const std::string candidate = randomHiddenName();
        file = FileDescriptor(::openat(folder.get(), candidate.c_str(),
                                       O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, permissions));
        if (file) {
            temporaryName = candidate;
            return;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    throwPathFailure({errno, std::generic_category()}, "create", path,
                     ": cannot write to the folder " + VEL_ANSI(folderPath));
}

void PosixTarget::writeAt(std::uint64_t offset, const char* data, std::size_t size) {
    const std::uint64_t end = offset + size;
    const auto write = [&](std::span<const char> rest) {
        return ::pwrite(file.get(), rest.data(), rest.size(),
                        static_cast<off_t>(end - rest.size()));
    };
    if (!writeAll({data, size}, write)) {
        fail(errno, "write");
    }
    // Let the disk write while we pack, so that the end need not wait. A failure here fails again
    // in bringToDisk().
    if (end >= givenToDisk + kStepToDisk) {
        ::sync_file_range(file.get(), static_cast<off_t>(givenToDisk),
                          static_cast<off_t>(end - givenToDisk), SYNC_FILE_RANGE_WRITE);
        givenToDisk = end;
    }
}

void PosixTarget::bringToDisk() {
    // Not every file system has permissions to set.
    if (isReplacing) {
        ::fchmod(file.get(), permissions);
    }
    // EINVAL: a file system without a disk behind it.
    if (::fsync(file.get()) != 0 && errno != EINVAL) {
        fail(errno, "write");
    }
}

void PosixTarget::putInPlace(const std::function<void()>& beforeIt) {
    const std::optional<struct stat> older = lookAtPlace();
    if (older && !isReplacing) {
        fail(EEXIST, "create");
    }
    beforeIt();
    if (older) {
        replace(*older);
    } else {
        takeFreePlace();
    }
}

void PosixTarget::takeFreePlace() {
    if (temporaryName.empty()) {
        if (link(name)) {
            return;
        }
        if (errno == EEXIST) {
            fail(errno, "create");
        }
        copyToNamed();
    }
    if (!renameToNothing()) {
        fail(errno, "create");
    }
}

bool PosixTarget::link(const std::string& newName) const {
    return ::linkat(AT_FDCWD, descriptorPath(file).c_str(), folder.get(), newName.c_str(),
                    AT_SYMLINK_FOLLOW) == 0;
}

bool PosixTarget::renameToNothing() {
    const char* from = temporaryName.c_str();
    const char* to = name.c_str();
    bool isMoved = ::renameat2(folder.get(), from, folder.get(), to, RENAME_NOREPLACE) == 0;
    // An older system, or a file system that cannot do it. linkat() does not replace a file either.
    if (!isMoved && errno != EEXIST && ::linkat(folder.get(), from, folder.get(), to, 0) == 0) {
        removeTemporaryName();
        return true;
    }
    isMoved = isMoved || (errno != EEXIST && !lookAtPlace() &&
                          ::renameat(folder.get(), from, folder.get(), to) == 0);
    if (isMoved) {
        temporaryName.clear();
    }
    return isMoved;
}

void PosixTarget::linkToTemporaryName() {
    for (int attempt = 0; attempt < kMostNames; ++attempt) {
        const std::string candidate = randomHiddenName();
        if (link(candidate)) {
            temporaryName = candidate;
            return;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    copyToNamed();
}

/// Copies an unnamed file to a named one, for a system that cannot give it a name.
void PosixTarget::copyToNamed() {
    constexpr std::size_t kBufferSize = std::size_t{1} << 17U;
    const FileDescriptor unnamed = std::move(file);
    openNamed();
    givenToDisk = 0;
    std::vector<char> buffer(kBufferSize);
    for (std::uint64_t offset = 0;;) {
        const ssize_t count = uninterrupted([&] {
            return ::pread(unnamed.get(), buffer.data(), buffer.size(), static_cast<off_t>(offset));
        });
        if (count < 0) {
            fail(errno, "read again");
        }
        if (count == 0) {
            break;
        }
        writeAt(offset, buffer.data(), static_cast<std::size_t>(count));
        offset += static_cast<std::uint64_t>(count);
    }
    bringToDisk();
}

void PosixTarget::replace(const struct stat& older) {
    if (temporaryName.empty()) {
        linkToTemporaryName();
    }
    const char* from = temporaryName.c_str();
    const char* to = name.c_str();
    if (::renameat2(folder.get(), from, folder.get(), to, RENAME_EXCHANGE) != 0) {
        // An older system, or a file system that cannot do it.
        if (::renameat(folder.get(), from, folder.get(), to) != 0) {
            fail(errno, "replace");
        }
        temporaryName.clear();
        return;
    }
    // Remove only the file that was checked.
    struct stat replaced {};
    if (::fstatat(folder.get(), from, &replaced, AT_SYMLINK_NOFOLLOW) == 0 &&
        !isSame(replaced, older)) {
        ::renameat2(folder.get(), from, folder.get(), to, RENAME_EXCHANGE);
        fail(EEXIST, "replace");
    }
    removeTemporaryName();
}

}  // namespace

std::unique_ptr<ReplacementTarget> openReplacementTarget(const LongFileName& path) {
    return std::make_unique<PosixTarget>(path);
}

}  // namespace tkcore
