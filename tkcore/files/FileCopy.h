#pragma once

#include <system_error>
#include <vector>

#include "tkcore/files/LongFileName.h"

namespace tkcore {

/// Copies a regular file, with its permissions, to a path where nothing is yet. Refuses anything
/// but a regular file. Throws std::system_error, naming the path it is about, and Interrupted. The
/// bytes copied before a failure stay.
void copyToNewFile(const LongFileName& source, const LongFileName& target);

/// Moves a file to a path on the same disk and replaces a file or an empty folder there. Throws
/// std::system_error.
void moveFile(const LongFileName& source, const LongFileName& target);

/// A failure that may pass by itself: somebody has a file open.
class OpenElsewhere final : public std::system_error {
public:
    using std::system_error::system_error;
};

/// Throws a std::system_error if moveFile() cannot replace what is at the path: a folder that is
/// not empty or a write-protected file. Throws OpenElsewhere for a file that somebody has open, on
/// systems that do not replace open files.
void requireReplaceable(const LongFileName& target);

/// Does the same for all the targets, but waits for a moment if only somebody has one open. A
/// request to end throws Interrupted.
void waitUntilReplaceable(const std::vector<LongFileName>& targets);

/// The part of requireReplaceable() that depends on the system, for anything but folders.
void requireReplaceableFile(const LongFileName& target);

}  // namespace tkcore
