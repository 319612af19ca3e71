#include "tkcore/files/PathStatus.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "tkcore/files/inside/OpenFolder.posix.h"

namespace tkcore {

namespace {

using Kind = PathStatus::Kind;

/// Returns 0 or the error code.
int look(const LongFileName& path, struct stat& status) {
    const PlaceOfFile place = placeOf(path);
    return fstatat(place.folder, place.name(), &status, 0) == 0 ? 0 : errno;
}

Kind kindOf(mode_t mode) {
    if (S_ISDIR(mode)) {
        return Kind::kDirectory;
    }
    return S_ISREG(mode) ? Kind::kFile : Kind::kOther;
}

}  // namespace

PathStatus statusOf(const LongFileName& path) {
    struct stat status {};
    if (const int error = look(path, status); error != 0) {
        const bool isNothing = error == ENOENT || error == ENOTDIR;
        return {isNothing ? Kind::kNothing : Kind::kUnknown, 0, {error, std::generic_category()}};
    }
    return {kindOf(status.st_mode), static_cast<std::uint64_t>(status.st_size), {}};
}

bool isSameName(const AString& left, const AString& right) {
    return left == right;
}

bool isSameFile(const LongFileName& left, const LongFileName& right) {
    struct stat leftStatus {};
    struct stat rightStatus {};
    return look(left, leftStatus) == 0 && look(right, rightStatus) == 0 &&
           leftStatus.st_dev == rightStatus.st_dev && leftStatus.st_ino == rightStatus.st_ino;
}

bool isTooLong(const LongFileName& path) {
    // Not through an open folder, because other programs get the whole path.
    struct stat status {};
    return lstat(VEL_ANSI(path).c_str(), &status) != 0 && errno == ENAMETOOLONG;
}

bool isTooLongForPrograms(const LongFileName& path) {
    return isTooLong(path);
}

}  // namespace tkcore
