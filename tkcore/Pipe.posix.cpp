#include "tkcore/Pipe.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tkcore {

bool CPipe::CreatePipe() {
    int descriptors[2];
    Close();
    if (pipe2(descriptors, O_CLOEXEC) != 0) {
        return false;
    }
    readEnd = FileDescriptor(descriptors[0]);
    writeEnd = FileDescriptor(descriptors[1]);
    return true;
}

void CPipe::Close() noexcept {
    readEnd.close();
    writeEnd.close();
}

int CPipeCommunicator::Read(char* buffer, int size, int& count, bool consume, int /*timeout*/,
                            bool /*acceptPart*/) {
    int waiting = 0;
    if (ioctl(readEnd->get(), FIONREAD, &waiting) != 0) {
        return errno;
    }
    count = std::min(waiting, size);
    if (!consume || count == 0) {
        return 0;
    }
    const ssize_t received = read(readEnd->get(), buffer, static_cast<std::size_t>(count));
    count = static_cast<int>(std::max<ssize_t>(received, 0));
    return received < 0 ? errno : 0;
}

}  // namespace tkcore
