#include "tkcore/FileDescriptor.h"

#include <unistd.h>

namespace tkcore {

void FileDescriptor::close() noexcept {
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

}  // namespace tkcore
