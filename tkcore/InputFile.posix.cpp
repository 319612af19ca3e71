#include "tkcore/InputFile.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tkcore {

namespace {

[[noreturn]] void throwError(int error, const std::string& text) {
    throw std::system_error(error, std::generic_category(), text);
}

}  // namespace

InputFile::InputFile(const std::string& filePath)
    // Without O_NONBLOCK the opening of a pipe nobody writes to would never return.
    : path(filePath), file(::open(filePath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        throwError(errno, "cannot open " + path);
    }
    directory = S_ISDIR(status.st_mode);
    if (!directory && !S_ISREG(status.st_mode)) {
        throwError(ENOTSUP, "cannot read " + path + ", which is neither a file nor a directory");
    }
    bytes = directory ? 0 : static_cast<std::uint64_t>(status.st_size);
    modified = status.st_mtime;
    permissionBits = status.st_mode & 07777U;
}

std::size_t InputFile::read(void* destination, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count =
            ::read(file.get(), static_cast<char*>(destination) + done, size - done);
        if (count == 0) {
            break;
        }
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            throwError(errno, "cannot read " + path);
        }
    }
    return done;
}

}  // namespace tkcore
