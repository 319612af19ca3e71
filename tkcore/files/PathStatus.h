#pragma once

#include <cstdint>
#include <system_error>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// What a path leads to, links followed.
struct PathStatus final {
    /// The last one where the system refuses to look: too long a name, a closed folder.
    enum class Kind { kNothing, kFile, kDirectory, kOther, kUnknown };

    Kind kind = Kind::kNothing;
    std::uint64_t size = 0;  // in bytes, of a file
    std::error_code reason;  // why nothing is there, or nothing is known
};

PathStatus statusOf(const LongFileName& path);

/// Whether the path leads to anything. False also if the system refuses to look: whoever goes on
/// with the path then gets the reason from the system.
bool isThere(const LongFileName& path);

/// Whether the path leads to a directory; false also if the system refuses to look.
bool isDirectory(const LongFileName& path);

/// The bytes of the regular file that the path leads to; 0 if it leads to none.
std::uint64_t fileSize(const LongFileName& path);

/// Whether both paths lead to one file, through whatever links and spellings.
bool isSameFile(const LongFileName& left, const LongFileName& right);

/// Where the links at the path end, whether or not there is a file. Links that run in a circle
/// are left for the system to complain about.
LongFileName followLinks(const LongFileName& path);

/// Whether the path, or a name in it, is longer than the system can take.
bool isTooLong(const LongFileName& path);

/// Whether an ordinary program cannot be given the path, though this one could take it.
bool isTooLongForPrograms(const LongFileName& path);

/// Bytes of a disk.
struct DiskRoom final {
    std::uint64_t all = 0;   // 0: the file system has no size, or is not known
    std::uint64_t free = 0;  // for this user
};

/// Of the disk that the folder is on.
DiskRoom roomIn(const LongFileName& folder);

}  // namespace tkcore
