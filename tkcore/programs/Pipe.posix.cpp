#include "tkcore/programs/Pipe.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tkcore/programs/inside/PipeEnd.posix.h"

namespace tkcore {

CPipe::CPipe() : readEnd(std::make_unique<PipeEnd>()), writeEnd(std::make_unique<PipeEnd>()) {}

CPipe::~CPipe() = default;

bool CPipe::CreatePipe() {
    int descriptors[2];
    Close();
    if (pipe2(descriptors, O_CLOEXEC) != 0) {
        return false;
    }
    readEnd->descriptor = FileDescriptor(descriptors[0]);
    writeEnd->descriptor = FileDescriptor(descriptors[1]);
    // Another process that has the write end can open this end, too, and read the bytes between our
    // look and our read.
    if (fcntl(descriptors[0], F_SETFL, O_NONBLOCK) != 0) {
        Close();
    }
    return static_cast<bool>(readEnd->descriptor);
}

void CPipe::Close() noexcept {
    readEnd->descriptor.close();
    closeWriteEnd();
}

void CPipe::closeWriteEnd() noexcept {
    writeEnd->descriptor.close();
}

int CPipeCommunicator::Read(char* buffer, int size, int& count, bool consume, int /*timeout*/,
                            bool /*acceptPart*/) {
    int waiting = 0;
    if (ioctl(readEnd->descriptor.get(), FIONREAD, &waiting) != 0) {
        return errno;
    }
    count = std::min(waiting, size);
    if (!consume || count == 0) {
        return 0;
    }
    const ssize_t received =
        read(readEnd->descriptor.get(), buffer, static_cast<std::size_t>(count));
    count = static_cast<int>(std::max<ssize_t>(received, 0));
    return received < 0 && errno != EAGAIN ? errno : 0;
}

}  // namespace tkcore
