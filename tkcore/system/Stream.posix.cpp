#include "tkcore/system/Stream.h"

#include <fcntl.h>
#include <unistd.h>

#include "tkcore/system/PatientWrite.posix.h"

namespace tkcore {

void openMissingStreams() noexcept {
    // The system gives the lowest free number.
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (fcntl(number, F_GETFD) < 0 && open("/dev/null", O_RDWR) != number) {
            return;
        }
    }
}

bool writeTo(Stream stream, std::string_view text) noexcept {
    return writePatiently(stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO, text);
}

}  // namespace tkcore
