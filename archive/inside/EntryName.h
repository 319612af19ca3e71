#pragma once

#include <string>
#include <string_view>

namespace velextracta {

/// The name of a file's entry in an archive: its path or only the last component of the path. Drive
/// letter, leading separators and components "", "." and ".." are left out: they could lead an
/// unpacking program out of its folder. All other bytes stay. Empty if nothing is left.
std::string entryName(std::string_view path, bool fullPath);

/// Whether the name has to be marked as UTF-8: it is valid UTF-8 and not only ASCII.
bool needsUtf8Mark(std::string_view name);

}  // namespace velextracta
