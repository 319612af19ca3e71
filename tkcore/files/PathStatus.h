#pragma once

#include <cstdint>
#include <system_error>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// What a path leads to, with links followed.
struct PathStatus final {
    /// kUnknown: the system refuses to look, because of a name that is too long or a closed folder.
    enum class Kind { kNothing, kFile, kDirectory, kOther, kUnknown };

    Kind kind = Kind::kNothing;
    std::uint64_t size = 0;  // in bytes, of a file
    std::error_code reason;  // of kNothing and kUnknown
};

PathStatus statusOf(const LongFileName& path);

/// Whether the path leads to anything. False also if the system refuses to look; the next use of
/// the path then fails with the system's reason.
bool isThere(const LongFileName& path);

/// Whether the path leads to a directory; false also if the system refuses to look.
bool isDirectory(const LongFileName& path);

/// The size in bytes of the regular file that the path leads to; 0 if there is none.
std::uint64_t fileSize(const LongFileName& path);

/// Whether both paths lead to the same file, whatever links and spellings they have.
bool isSameFile(const LongFileName& left, const LongFileName& right);

/// Whether the system takes both for the same name of a file.
bool isSameName(const AString& left, const AString& right);

/// The path at which the links of this path end, whether or not there is a file. Links in a circle
/// are not followed to an end; the next use of the path then fails.
LongFileName followLinks(const LongFileName& path);

/// Whether the path, or a name in it, is longer than the system can take.
bool isTooLong(const LongFileName& path);

/// Whether the path is too long for ordinary programs, though not for this one.
bool isTooLongForPrograms(const LongFileName& path);

/// Size and free space of a disk, in bytes.
struct DiskRoom final {
    std::uint64_t all = 0;   // 0: the file system has no size, or it is not known
    std::uint64_t free = 0;  // for this user
};

/// The disk that the folder is on.
DiskRoom roomIn(const LongFileName& folder);

}  // namespace tkcore
