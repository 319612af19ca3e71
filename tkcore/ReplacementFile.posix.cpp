#include "tkcore/ReplacementFile.h"

#include <cerrno>
#include <cstdio>
#include <random>
#include <utility>

#include <boost/filesystem.hpp>
#include <boost/format.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/FileDescriptor.posix.h"

namespace tkcore {

namespace {

namespace fs = boost::filesystem;

constexpr std::size_t kBufferSize = std::size_t{1} << 20U;
constexpr mode_t kNewFilePermissions = 0666;  // less the umask, which the system takes off
constexpr mode_t kPermissionBits = 07777;
constexpr int kMostLinks = 40;
constexpr int kMostNames = 100;

/// A hidden name of fixed length: one made from the file's own name could grow too long.
std::string randomHiddenName() {
    std::random_device random;
    return (boost::format(".unfinished-%08x%08x") % random() % random()).str();
}

std::string descriptorPath(const FileDescriptor& descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor.get());
}

bool descriptorPathsWork(const FileDescriptor& descriptor) {
    return ::access(descriptorPath(descriptor).c_str(), F_OK) == 0;
}

/// Where the links at the path end, whether or not there is a file. Links that run in a circle
/// are left for stat() to complain about.
fs::path followLinks(fs::path path) {
    for (int links = 0; links < kMostLinks; ++links) {
        boost::system::error_code error;
        const fs::path target = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return path;
}

}  // namespace

/// The file while it is not in place, and the place.
class ReplacementFile::Target final {
public:
    explicit Target(const std::string& filePath);
    ~Target();
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void writeAt(std::uint64_t offset, const char* data, std::size_t size);
    void bringToDisk();
    void putInPlace();

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
    bool keepPermissions = false;  // those of an older file, whatever the umask
};

ReplacementFile::Target::Target(const std::string& filePath) : path(filePath) {
    findPlace();
    openFile();
}

ReplacementFile::Target::~Target() {
    if (!temporaryName.empty()) {
        ::unlinkat(folder.get(), temporaryName.c_str(), 0);
    }
}

void ReplacementFile::Target::findPlace() {
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

void ReplacementFile::Target::openFile() {
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

void ReplacementFile::Target::writeAt(std::uint64_t offset, const char* data, std::size_t size) {
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
}

void ReplacementFile::Target::bringToDisk() {
    if (keepPermissions && ::fchmod(file.get(), permissions) != 0) {
        fail(errno, "set the permissions of");
    }
    // EINVAL: a file system that has nothing to bring to a disk.
    if (::fsync(file.get()) != 0 && errno != EINVAL) {
        fail(errno, "write");
    }
}

void ReplacementFile::Target::putInPlace() {
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

bool ReplacementFile::Target::linkUnnamed(const std::string& newName) {
    if (::linkat(AT_FDCWD, descriptorPath(file).c_str(), folder.get(), newName.c_str(),
                 AT_SYMLINK_FOLLOW) == 0) {
        return true;
    }
    if (errno != EEXIST) {
        fail(errno, "create");
    }
    return false;
}

ReplacementFile::ReplacementFile(std::string filePath)
    : path(std::move(filePath)), target(std::make_unique<Target>(path)) {
    buffer.reserve(kBufferSize);
}

ReplacementFile::~ReplacementFile() = default;

template <typename Action>
void ReplacementFile::perform(const Action& action) {
    try {
        action(*target);
    } catch (const std::system_error& error) {
        failure = error.code();
        throw;
    }
}

void ReplacementFile::write(const void* data, std::size_t size) {
    throwEarlierFailure();
    if (buffer.size() + size > kBufferSize) {
        flush();
    }
    const char* bytes = static_cast<const char*>(data);
    if (size >= kBufferSize) {
        perform([&](Target& file) { file.writeAt(bufferOffset, bytes, size); });
        bufferOffset += size;
    } else {
        buffer.insert(buffer.end(), bytes, bytes + size);
    }
}

void ReplacementFile::seek(std::uint64_t offset) {
    throwEarlierFailure();
    if (offset != tell()) {
        flush();
        bufferOffset = offset;
    }
}

void ReplacementFile::commit() {
    throwEarlierFailure();
    flush();
    perform([](Target& file) {
        file.bringToDisk();
        file.putInPlace();
    });
}

void ReplacementFile::flush() {
    perform([this](Target& file) { file.writeAt(bufferOffset, buffer.data(), buffer.size()); });
    bufferOffset += buffer.size();
    buffer.clear();
}

void ReplacementFile::throwEarlierFailure() const {
    if (failure) {
        throw std::system_error(failure, "cannot write " + path);
    }
}

}  // namespace tkcore
