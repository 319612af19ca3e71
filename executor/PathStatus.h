#pragma once

#include <boost/filesystem.hpp>

namespace velextracta {

/// Whether the path leads to anything. One that cannot be looked at (too long a name, a closed
/// folder) does not: what is done with it next then fails, and is told.
inline bool isThere(const boost::filesystem::path& path) {
    boost::system::error_code error;
    return boost::filesystem::exists(boost::filesystem::status(path, error));
}

/// Whether the path leads to a directory; the same holds for one that cannot be looked at.
inline bool isDirectory(const boost::filesystem::path& path) {
    boost::system::error_code error;
    return boost::filesystem::is_directory(path, error);
}

}  // namespace velextracta
