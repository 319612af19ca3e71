#include "tkcore/files/InputFile.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/files/inside/OpenFolder.posix.h"
#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

namespace {

[[noreturn]] void throwError(int error, const std::string& text) {
    throw std::system_error(error, std::generic_category(), text);
}

// Without O_NONBLOCK the opening of a pipe nobody writes to would never return.
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
        throwError(errno, "cannot open " + VEL_ANSI(path));
    }
    directory = S_ISDIR(status.st_mode);
    if (!directory && !S_ISREG(status.st_mode)) {
        throwError(ENOTSUP,
                   "cannot read " + VEL_ANSI(path) + ", which is neither a file nor a directory");
    }
    bytes = directory ? 0 : static_cast<std::uint64_t>(status.st_size);
    modified = status.st_mtime;
    permissionBits = status.st_mode & 07777U;
}

std::size_t InputFile::readSome(void* destination, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(file->descriptor.get(), destination, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            throwError(errno, "cannot read " + VEL_ANSI(path));
        }
    }
}

void InputFile::rewind() {
    if (::lseek(file->descriptor.get(), 0, SEEK_SET) != 0) {
        throwError(errno, "cannot read " + VEL_ANSI(path) + " again");
    }
}

}  // namespace tkcore
