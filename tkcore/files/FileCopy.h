#pragma once

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// Copies a regular file, with its permissions, to a path at which nothing is yet. Anything but a
/// regular file is refused. Throws std::system_error, naming the path it is about, and Interrupted;
/// what was copied by then stays.
void copyToNewFile(const LongFileName& source, const LongFileName& target);

/// Moves a file to a path on the same disk, over a file that may be there. Throws
/// std::system_error.
void moveFile(const LongFileName& source, const LongFileName& target);

}  // namespace tkcore
