#pragma once

#include <string>

namespace tkcore {

/// Copies a regular file, with its permissions, to a path at which nothing is yet. Anything but a
/// regular file is refused. Throws std::system_error, naming the path it is about, and Interrupted;
/// what was copied by then stays.
void copyToNewFile(const std::string& source, const std::string& target);

}  // namespace tkcore
