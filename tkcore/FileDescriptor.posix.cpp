#include "tkcore/FileDescriptor.posix.h"

#include <unistd.h>

namespace tkcore {

void FileDescriptor::close() noexcept {
    if (descriptor >= 0) {
        ::close(std::exchange(descriptor, kNone));
    }
}

}  // namespace tkcore
