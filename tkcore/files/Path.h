#pragma once

#include <optional>
#include <string>

#include <boost/filesystem/path.hpp>

#include "tkcore/files/LongFileName.h"

// Paths as texts, and as the filesystem library takes them. Every path of that library is made and
// read by these: its own conversion of narrow text is not that of VEL_ANSI() everywhere.

namespace tkcore {

/// The path that a text names. Where the system limits the length of a path, a longer one has the
/// form that is free of the limit, and is absolute.
boost::filesystem::path toPath(const AString& text);

/// Empty for a path that is reserved.
inline boost::filesystem::path toPath(const LongFileName& file) {
    return file.isReserved() ? boost::filesystem::path() : toPath(file.FilePath());
}

/// The inverse of toPath().
AString pathText(const boost::filesystem::path& path);

/// The text of an absolute path; a relative one is taken from the current directory, an empty one
/// is that directory. Nothing else is changed but a form of toPath()'s, which is taken back. None
/// for a relative one where the current directory has been removed.
std::optional<AString> absoluteText(const AString& text);

/// Whether the system takes an absolute path, or a name in it, for something else than what it
/// says: a device, a part of a file, or the file of another name.
bool isReservedText(const AString& text);

/// An absolute path as other programs of this system expect it, with nothing but its own separator
/// between the names; any other text as it is.
AString pathForPrograms(const AString& text);

/// The same path, narrow, with "/" between its names, and without what only says how to read it.
std::string portablePath(std::string path);

}  // namespace tkcore
