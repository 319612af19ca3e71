#pragma once

#include <optional>
#include <string>

#include <boost/filesystem/path.hpp>

#include "tkcore/files/LongFileName.h"

// Conversion between texts and paths of the filesystem library. Convert only by these functions: on
// some systems the library's own conversion of narrow text differs from that of VEL_ANSI().

namespace tkcore {

/// The path of a text. If it exceeds the system's limit on the length of paths, it becomes absolute
/// and has the form without limit.
boost::filesystem::path toPath(const AString& text);

/// Empty for a path that is reserved.
inline boost::filesystem::path toPath(const LongFileName& file) {
    return file.isReserved() ? boost::filesystem::path() : toPath(file.FilePath());
}

/// The inverse of toPath().
AString pathText(const boost::filesystem::path& path);

/// The text of the absolute path. A relative text starts from the current directory; an empty text
/// means that directory. The form without limit becomes the ordinary one. Nothing else is changed.
/// None for a relative text if the current directory has been removed.
std::optional<AString> absoluteText(const AString& text);

/// Whether the system reads an absolute path, or a name in it, as a device, as a part of a file or
/// as the name of another file.
bool isReservedText(const AString& text);

/// An absolute path as other programs of this system expect it, with only the system's own
/// separator between the names. Any other text stays as it is.
AString pathForPrograms(const AString& text);

/// The path with "/" between its names, and without the prefix of the form without limit.
std::string portablePath(std::string path);

}  // namespace tkcore
