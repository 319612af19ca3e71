#pragma once

#include <string>
#include <string_view>

namespace velextracta {

/// The name under which an archive keeps the file of a path: the whole path, or its last component
/// only, without drive letter and leading separators, and without "", "." and ".." components,
/// which could lead an unpacking program out of its folder. The bytes are kept as they are. Empty
/// if nothing is left.
std::string entryName(std::string_view path, bool fullPath);

/// Whether the name has to be marked as UTF-8: it is, and it is more than ASCII.
bool needsUtf8Mark(std::string_view name);

}  // namespace velextracta
