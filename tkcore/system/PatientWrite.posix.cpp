#include "tkcore/system/PatientWrite.posix.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tkcore/system/Interruption.h"

namespace tkcore {

namespace {

/// How long a request to end may go unnoticed, and how much longer the reader is waited for then.
constexpr int kMillisecondsToWait = 100;

/// Waits until a write would not block; false once a request to end has come.
bool awaitRoom(int descriptor) noexcept {
    for (;;) {
        const bool isLast = isEndRequested();
        pollfd room{descriptor, POLLOUT, 0};
        const int count = poll(&room, 1, kMillisecondsToWait);
        if (count > 0 || (count < 0 && errno != EINTR)) {
            return true;  // the write will tell
        }
        if (isLast) {
            errno = EINTR;
            return false;
        }
    }
}

/// How many bytes may be written without blocking once there is any room: a pipe guarantees
/// PIPE_BUF, a file takes all.
std::size_t mostAtOnce(int descriptor) noexcept {
    struct stat status {};
    const bool isFile = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? SSIZE_MAX : PIPE_BUF;
}

}  // namespace

bool writePatiently(int descriptor, std::string_view bytes) noexcept {
    const std::size_t most = mostAtOnce(descriptor);
    while (!bytes.empty()) {
        if (!awaitRoom(descriptor)) {
            return false;
        }
        const ssize_t count = ::write(descriptor, bytes.data(), std::min(bytes.size(), most));
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            errno = count == 0 ? ENOSPC : errno;
            return false;
        }
    }
    return true;
}

}  // namespace tkcore
