#pragma once

#include <boost/filesystem.hpp>

namespace tkcore {

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

/// Whether both paths lead to one file, through whatever links and spellings.
inline bool isSameFile(const boost::filesystem::path& left, const boost::filesystem::path& right) {
    boost::system::error_code error;
    return boost::filesystem::equivalent(left, right, error) && !error;
}

/// Whether the path, or a name in it, is longer than the system can take.
inline bool isTooLong(const boost::filesystem::path& path) {
    boost::system::error_code error;
    boost::filesystem::symlink_status(path, error);
    return error == boost::system::errc::filename_too_long;
}

}  // namespace tkcore
