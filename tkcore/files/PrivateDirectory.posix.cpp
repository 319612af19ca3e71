#include "tkcore/files/PrivateDirectory.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/files/inside/FolderContents.posix.h"
#include "tkcore/files/inside/OpenFolder.posix.h"
#include "tkcore/files/inside/PathFailure.h"

namespace tkcore {

namespace {

/// While an object of this class exists, new files have all rights for their owner.
class OwnersRights final {
public:
    OwnersRights() : older(umask(0)) { umask(older & ~mode_t{S_IRWXU}); }
    ~OwnersRights() { umask(older); }
    OwnersRights(const OwnersRights&) = delete;
    OwnersRights& operator=(const OwnersRights&) = delete;

private:
    mode_t older;
};

std::string withoutSeparatorAtItsEnd(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

[[noreturn]] void fail(int error, const char* action, const LongFileName& path) {
    throwPathFailure({error, std::generic_category()}, std::string(action) + " directory", path);
}

}  // namespace

struct PrivateDirectory::System final {
    [[nodiscard]] bool isThis(const struct stat& other) const noexcept {
        return other.st_dev == status.st_dev && other.st_ino == status.st_ino;
    }
    /// Removes the empty directory; returns 0 or the error code.
    [[nodiscard]] int removeFolder() const;

    std::string givenPath;
    std::string givenName;
    std::shared_ptr<OpenFolder> folder = std::make_shared<OpenFolder>();
    struct stat status {};
};

PrivateDirectory::PrivateDirectory(const LongFileName& path) : system(std::make_unique<System>()) {
    const std::string text = withoutSeparatorAtItsEnd(VEL_ANSI(path));
    const std::size_t slash = text.rfind('/');
    if (slash == std::string::npos) {
        fail(EINVAL, "create", path);
    }
    // Allocate memory before creating the directory: after a failure nobody would remove it.
    system->givenPath = text;
    system->givenName = text.substr(slash + 1);
    heldPath = path.heldOpen(system->folder);
    {
        const OwnersRights rights;
        if (mkdir(text.c_str(), 0777) != 0) {
            fail(errno, "create", path);
        }
    }
    FileDescriptor& descriptor = system->folder->descriptor;
    descriptor =
        FileDescriptor(open(text.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!descriptor || fstat(descriptor.get(), &system->status) != 0) {
        const int error = errno;
        rmdir(text.c_str());
        fail(error, "open the new", path);
    }
}

PrivateDirectory::~PrivateDirectory() = default;

PrivateDirectory::Name PrivateDirectory::name() const {
    struct stat found {};
    // Look by its whole path, as other programs do.
    const std::string path = withoutSeparatorAtItsEnd(VEL_ANSI(heldPath));
    if (stat(path.c_str(), &found) != 0) {
        // A link that leads nowhere is something else, too.
        return lstat(path.c_str(), &found) != 0 ? Name::kNothing : Name::kOther;
    }
    return system->isThis(found) ? Name::kOurs : Name::kOther;
}

std::vector<AString> PrivateDirectory::contents() const {
    std::vector<AString> names;
    const int error = forEachName(system->folder->descriptor.get(),
                                  [&](const char* name) { names.emplace_back(name); });
    if (error != 0) {
        fail(error, "list", heldPath);
    }
    return names;
}

void PrivateDirectory::remove() {
    const int descriptor = system->folder->descriptor.get();
    struct stat now {};
    const bool isSeen = fstat(descriptor, &now) == 0;
    if (isSeen && now.st_nlink == 0) {
        return;  // somebody has removed it
    }
    if (isSeen && (now.st_mode & S_IRWXU) != S_IRWXU) {
        fchmod(descriptor, now.st_mode | S_IRWXU);
    }
    const int failure = emptyFolder(descriptor);
    const int error = failure != 0 ? failure : system->removeFolder();
    if (error != 0) {
        fail(error, "remove", heldPath);
    }
}

int PrivateDirectory::System::removeFolder() const {
    const int descriptor = folder->descriptor.get();
    // It may have been moved.
    const FileDescriptor parent(openat(descriptor, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat found {};
    if (!parent) {  // perhaps no descriptor is free
        const int error = errno;
        const bool isThere = lstat(givenPath.c_str(), &found) == 0 && isThis(found);
        return isThere && rmdir(givenPath.c_str()) == 0 ? 0 : error;
    }
    const auto isHere = [&](const char* name) {
        return fstatat(parent.get(), name, &found, AT_SYMLINK_NOFOLLOW) == 0 && isThis(found);
    };
    std::string name = givenName;
    if (!isHere(name.c_str())) {
        name.clear();
        const FileDescriptor listed(openat(descriptor, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        forEachName(listed.get(), [&](const char* other) { name = isHere(other) ? other : name; });
    }
    if (name.empty()) {
        const bool isGone = fstat(descriptor, &found) == 0 && found.st_nlink == 0;
        return isGone ? 0 : ENOENT;
    }
    return unlinkat(parent.get(), name.c_str(), AT_REMOVEDIR) == 0 ? 0 : errno;
}

}  // namespace tkcore
