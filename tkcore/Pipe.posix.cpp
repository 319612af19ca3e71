#include "tkcore/Pipe.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tkcore/ChildNews.h"

namespace tkcore {

bool CPipe::CreatePipe() {
    int descriptors[2];
    Close();
    if (pipe2(descriptors, O_CLOEXEC) != 0) {
        return false;
    }
    readEnd = {FileDescriptor(descriptors[0]), announceWrites(descriptors[0])};
    writeEnd = {FileDescriptor(descriptors[1])};
    return true;
}

void CPipe::Close() noexcept {
    readEnd.descriptor.close();
    writeEnd.descriptor.close();
}

int CPipeCommunicator::Read(char* buffer, int size, int& count, bool consume, int /*timeout*/,
                            bool /*acceptPart*/) {
    const int news = childNews();
    if (readEnd->announcesWrites && readEnd->emptyAt == news) {
        count = 0;
        return 0;
    }
    int waiting = 0;
    if (ioctl(readEnd->descriptor.get(), FIONREAD, &waiting) != 0) {
        return errno;
    }
    readEnd->emptyAt = waiting == 0 ? news : -1;
    count = std::min(waiting, size);
    if (!consume || count == 0) {
        return 0;
    }
    const ssize_t received =
        read(readEnd->descriptor.get(), buffer, static_cast<std::size_t>(count));
    count = static_cast<int>(std::max<ssize_t>(received, 0));
    return received < 0 ? errno : 0;
}

}  // namespace tkcore
