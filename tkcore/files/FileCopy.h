#pragma once

#include <system_error>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// Copies a regular file, with its permissions, to a path at which nothing is yet. Anything but a
/// regular file is refused. Throws std::system_error, naming the path it is about, and Interrupted;
/// what was copied by then stays.
void copyToNewFile(const LongFileName& source, const LongFileName& target);

/// Moves a file to a path on the same disk, over a file or an empty folder that may be there.
/// Throws std::system_error.
void moveFile(const LongFileName& source, const LongFileName& target);

/// What may pass by itself: somebody holds a file open.
class OpenElsewhere final : public std::system_error {
public:
    using std::system_error::system_error;
};

/// Throws a std::system_error if something at the path would withstand moveFile() as things stand:
/// a folder that holds anything, a write-protected file and, as OpenElsewhere, one that somebody
/// has open, where the system minds.
void requireReplaceable(const LongFileName& target);

/// The system's half of it, for anything but folders.
void requireReplaceableFile(const LongFileName& target);

}  // namespace tkcore
