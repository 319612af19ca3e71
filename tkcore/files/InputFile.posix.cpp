#include "tkcore/files/InputFile.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/files/inside/OpenFolder.posix.h"
#include "tkcore/files/inside/PathFailure.h"
#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

namespace {

[[noreturn]] void fail(int error, const char* action, const LongFileName& path,
                       const char* more = "") {
    throwPathFailure({error, std::generic_category()}, action, path, more);
}

// Without O_NONBLOCK, opening a pipe without a writer would never return.
int openToRead(const PlaceOfFile& place) {
    return ::openat(place.folder, place.name(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

}  // namespace

struct InputFile::OpenFile final {
    explicit OpenFile(const LongFileName& path) : descriptor(openToRead(placeOf(path))) {}

    const FileDescriptor descriptor;
};

InputFile::~InputFile() = default;

InputFile::InputFile(const LongFileName& filePath)
    : path(filePath), file(std::make_unique<OpenFile>(filePath)) {
    struct stat status {};
    if (!file->descriptor || ::fstat(file->descriptor.get(), &status) != 0) {
        fail(errno, "open", path);
    }
    directory = S_ISDIR(status.st_mode);
    if (!directory && !S_ISREG(status.st_mode)) {
        fail(ENOTSUP, "read", path, ", which is neither a file nor a directory");
    }
    bytes = directory ? 0 : static_cast<std::uint64_t>(status.st_size);
    modified = status.st_mtime;
    permissionBits = status.st_mode & 07777U;
}

std::size_t InputFile::readSome(void* destination, std::size_t size) {
    const ssize_t count =
        uninterrupted([&] { return ::read(file->descriptor.get(), destination, size); });
    if (count < 0) {
        fail(errno, "read", path);
    }
    return static_cast<std::size_t>(count);
}

void InputFile::rewind() {
    if (::lseek(file->descriptor.get(), 0, SEEK_SET) != 0) {
        fail(errno, "read", path, " again");
    }
}

}  // namespace tkcore
