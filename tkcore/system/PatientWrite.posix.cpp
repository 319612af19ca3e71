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

/// The longest time until a request to end is noticed, and the time to wait for the reader after
/// it.
constexpr int kMillisecondsToWait = 100;

/// Waits until a write would not block; false once a request to end has come.
bool awaitRoom(int descriptor) noexcept {
    for (;;) {
        const bool isLast = isEndRequested();
        pollfd room{descriptor, POLLOUT, 0};
        const int count = poll(&room, 1, kMillisecondsToWait);
        if (count > 0 || (count < 0 && errno != EINTR)) {
            return true;  // the write succeeds, or fails with the reason
        }
        if (isLast) {
            errno = EINTR;
            return false;
        }
    }
}

/// How many bytes can be written without blocking if there is any room: PIPE_BUF to a pipe, any
/// number to a file.
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
