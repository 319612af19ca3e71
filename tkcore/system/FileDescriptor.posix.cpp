#include "tkcore/system/FileDescriptor.posix.h"

#include <unistd.h>

namespace tkcore {

void FileDescriptor::close() noexcept {
    if (descriptor >= 0) {
        ::close(std::exchange(descriptor, kNone));
    }
}

std::string descriptorPath(const FileDescriptor& descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor.get());
}

}  // namespace tkcore
