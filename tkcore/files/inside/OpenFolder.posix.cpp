#include "tkcore/files/inside/OpenFolder.posix.h"

#include <fcntl.h>

namespace tkcore {

PlaceOfFile placeOf(const LongFileName& file) {
    if (const OpenFolder* folder = file.openFolder(); folder != nullptr) {
        return {folder->descriptor.get(), VEL_ANSI(file.name())};
    }
    return {AT_FDCWD, VEL_ANSI(file)};
}

}  // namespace tkcore
