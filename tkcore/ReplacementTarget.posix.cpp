#include "tkcore/ReplacementTarget.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <boost/filesystem.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/FileDescriptor.posix.h"

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

constexpr mode_t kNewFilePermissions = 0666;  // less the umask, which the system takes off
constexpr mode_t kPermissionBits = 07777;
constexpr std::uint64_t kStepToDisk = std::uint64_t{8} << 20U;

std::string descriptorPath(const FileDescriptor& descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor.get());
}

bool descriptorPathsWork(const FileDescriptor& descriptor) {
    return ::access(descriptorPath(descriptor).c_str(), F_OK) == 0;
}

class PosixTarget final : public ReplacementTarget {
public:
    explicit PosixTarget(const std::string& filePath);
    ~PosixTarget() override;

    void writeAt(std::uint64_t offset, const char* data, std::size_t size) override;
    void bringToDisk() override;
    void putInPlace() override;

private:
    void findPlace();
    void openFile();
    /// Whether the unnamed file has been given the name; false if there is a file of that name.
    bool linkUnnamed(const std::string& newName);
    [[noreturn]] void fail(int error, const char* action) const {
        throw std::system_error(error, std::generic_category(),
                                std::string("cannot ") + action + " " + path);
    }

    std::string path;
    std::string name;           // in the folder, after the links have been followed
    std::string temporaryName;  // empty while the file has no name that has to be removed
    FileDescriptor folder;
    FileDescriptor file;
    mode_t permissions = kNewFilePermissions;
    std::uint64_t givenToDisk = 0;  // bytes, from the start
    bool keepPermissions = false;   // those of an older file, whatever the umask
};

PosixTarget::PosixTarget(const std::string& filePath) : path(filePath) {
    findPlace();
    openFile();
}

PosixTarget::~PosixTarget() {
    if (!temporaryName.empty()) {
        ::unlinkat(folder.get(), temporaryName.c_str(), 0);
    }
}

void PosixTarget::findPlace() {
    const fs::path place = followLinks(path);
    name = place.filename().string();

    struct stat older {};
    if (::stat(place.c_str(), &older) == 0) {
        if (S_ISDIR(older.st_mode)) {
            fail(EISDIR, "replace");
        }
        if (!S_ISREG(older.st_mode)) {
            fail(ENOTSUP, "replace what is no regular file,");
        }
        if (::faccessat(AT_FDCWD, place.c_str(), W_OK, AT_EACCESS) != 0) {
            fail(errno, "replace");
        }
        permissions = older.st_mode & kPermissionBits;
        keepPermissions = true;
    } else if (errno != ENOENT || name.empty() || path.ends_with('/')) {
        fail(errno, "create");
    }

    // The folder is kept open: the path may be relative, and the current directory may change.
    const fs::path parent = place.has_parent_path() ? place.parent_path() : ".";
    folder = FileDescriptor(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        fail(errno, "create");
    }
}

void PosixTarget::openFile() {
    // A file without a name is gone with the process, even if that is killed.
    file =
        FileDescriptor(::openat(folder.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, permissions));
    if (file && descriptorPathsWork(file)) {
        return;
    }
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
    fail(errno, "create");
}

void PosixTarget::writeAt(std::uint64_t offset, const char* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count =
            ::pwrite(file.get(), data + done, size - done, static_cast<off_t>(offset + done));
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            fail(count == 0 ? ENOSPC : errno, "write");
        }
    }
    // The disk gets to work while we do, and is not waited for in the end. What fails then fails at
    // bringToDisk().
    if (const std::uint64_t end = offset + size; end >= givenToDisk + kStepToDisk) {
        ::sync_file_range(file.get(), static_cast<off_t>(givenToDisk),
                          static_cast<off_t>(end - givenToDisk), SYNC_FILE_RANGE_WRITE);
        givenToDisk = end;
    }
}

void PosixTarget::bringToDisk() {
    if (keepPermissions && ::fchmod(file.get(), permissions) != 0) {
        fail(errno, "set the permissions of");
    }
    // EINVAL: a file system that has nothing to bring to a disk.
    if (::fsync(file.get()) != 0 && errno != EINVAL) {
        fail(errno, "write");
    }
}

void PosixTarget::putInPlace() {
    if (temporaryName.empty()) {
        if (linkUnnamed(name)) {
            return;
        }
        // A link never replaces a file; a renaming does.
        for (int attempt = 0; attempt < kMostNames && temporaryName.empty(); ++attempt) {
            const std::string candidate = randomHiddenName();
            if (linkUnnamed(candidate)) {
                temporaryName = candidate;
            }
        }
    }
    if (::renameat(folder.get(), temporaryName.c_str(), folder.get(), name.c_str()) != 0) {
        fail(errno, "replace");
    }
    temporaryName.clear();
}

bool PosixTarget::linkUnnamed(const std::string& newName) {
    if (::linkat(AT_FDCWD, descriptorPath(file).c_str(), folder.get(), newName.c_str(),
                 AT_SYMLINK_FOLLOW) == 0) {
        return true;
    }
    if (errno != EEXIST) {
        fail(errno, "create");
    }
    return false;
}

}  // namespace

std::unique_ptr<ReplacementTarget> openReplacementTarget(const std::string& path) {
    return std::make_unique<PosixTarget>(path);
}

}  // namespace tkcore
