#include "tkcore/files/inside/FolderContents.posix.h"

#include <array>
#include <cerrno>
#include <string>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

namespace {

constexpr int kReadFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Opens the directory of that name and sets all rights for its owner; none if there is no such
/// directory.
FileDescriptor openToEmpty(int folder, const char* name) {
    FileDescriptor opened(openat(folder, name, kReadFolder));
    if (!opened && errno == EACCES) {
        const FileDescriptor place(
            openat(folder, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        // This path changes the rights even if the directory may not be opened, and never those of
        // something else that has got its name.
        if (place) {
            chmod(descriptorPath(place).c_str(), S_IRWXU);
        }
        opened = FileDescriptor(openat(folder, name, kReadFolder));
    }
    struct stat status {};
    if (opened && fstat(opened.get(), &status) == 0 && (status.st_mode & S_IRWXU) != S_IRWXU) {
        fchmod(opened.get(), S_IRWXU);
    }
    return opened;
}

/// One pass over a folder. It moves the directories of its directories to the top, so that any
/// depth needs the same number of descriptors and the same stack.
class Sweep final {
public:
    Sweep(int folder, unsigned& nameCount) : top(folder), count(nameCount) {}

    int run() {
        const int listing = forEachName(top, [this](const char* name) { take(name); });
        return listing != 0 ? listing : failure;
    }
    [[nodiscard]] bool hasFound() const noexcept { return found; }
    [[nodiscard]] bool hasMoved() const noexcept { return moved; }

private:
    void take(const char* name) {
        found = true;
        if (unlinkat(top, name, 0) == 0) {
            moved = true;
            return;
        }
        const int reason = errno;
        const FileDescriptor inner = openToEmpty(top, name);
        if (!inner) {
            failure = errno == ENOTDIR || errno == ELOOP ? reason : errno;
            return;
        }
        forEachName(inner.get(), [&](const char* below) { bringUp(inner.get(), below); });
        if (unlinkat(top, name, AT_REMOVEDIR) == 0) {
            moved = true;
        } else {
            failure = errno;
        }
    }

    void bringUp(int inner, const char* name) {
        // openToEmpty() sets the rights that moving a directory needs.
        if (unlinkat(inner, name, 0) != 0 && openToEmpty(inner, name)) {
            const std::string newName = ".removed-" + std::to_string(++count);
            moved = renameat(inner, name, top, newName.c_str()) == 0 || moved;
        }
    }

    int top;
    unsigned& count;  // of the names given in all sweeps
    int failure = 0;
    bool found = false;
    bool moved = false;
};

}  // namespace

int forEachName(int folder, const std::function<void(const char*)>& action) {
    // Do not use the library's listing: it needs another descriptor, and memory.
    alignas(dirent64) std::array<char, 4096> entries;
    if (lseek(folder, 0, SEEK_SET) < 0) {
        return errno;
    }
    for (;;) {
        const ssize_t size = getdents64(folder, entries.data(), entries.size());
        if (size <= 0) {
            return size < 0 ? errno : 0;
        }
        for (ssize_t at = 0; at < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(entries.data() + at);
            at += entry->d_reclen;
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..") {
                action(entry->d_name);
            }
        }
    }
}

int emptyFolder(int folder) {
    // A limit, because somebody may create files there without end.
    constexpr int kMostSweeps = 10'000;
    unsigned nameCount = 0;
    for (int sweeps = 0; sweeps < kMostSweeps; ++sweeps) {
        Sweep sweep(folder, nameCount);
        const int failure = sweep.run();
        if (!sweep.hasFound() || !sweep.hasMoved()) {
            return failure;
        }
    }
    return ENOTEMPTY;
}

int removeEntry(int folder, const char* name) {
    if (unlinkat(folder, name, 0) == 0) {
        return 0;
    }
    const int reason = errno;
    const FileDescriptor inner = openToEmpty(folder, name);
    if (!inner) {
        return errno == ENOTDIR || errno == ELOOP ? reason : errno;
    }
    const int failure = emptyFolder(inner.get());
    return unlinkat(folder, name, AT_REMOVEDIR) == 0 ? 0 : (failure != 0 ? failure : errno);
}

}  // namespace tkcore
