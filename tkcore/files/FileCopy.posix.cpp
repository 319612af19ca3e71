#include "tkcore/files/FileCopy.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "tkcore/files/inside/OpenFolder.posix.h"
#include "tkcore/files/inside/PathFailure.h"

namespace tkcore {

void moveFile(const LongFileName& source, const LongFileName& target) {
    const PlaceOfFile from = placeOf(source);
    const PlaceOfFile to = placeOf(target);
    const auto isMoved = [&] {
        return renameat(from.folder, from.name(), to.folder, to.name()) == 0;
    };
    if (isMoved()) {
        return;
    }
    // The system does not replace a file by a directory, or a directory by a file. Remove the old
    // one first; a directory must be empty.
    const int error = errno;
    const bool isOutOfTheWay =
        (error == EISDIR && unlinkat(to.folder, to.name(), AT_REMOVEDIR) == 0) ||
        (error == ENOTDIR && unlinkat(to.folder, to.name(), 0) == 0);
    if (!isOutOfTheWay || !isMoved()) {
        throwPathFailure({error, std::generic_category()}, "move", source,
                         " to " + VEL_ANSI(target));
    }
}

void requireReplaceableFile(const LongFileName& /*target*/) {}  // its folder decides

}  // namespace tkcore
