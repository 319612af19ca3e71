#pragma once

#include <boost/filesystem.hpp>

namespace velextracta {

// A path that cannot be looked at (too long a name, a closed folder) is neither: what is done
// with it next then fails, and is told.

inline bool isThere(const boost::filesystem::path& path) {
    boost::system::error_code error;
    return boost::filesystem::exists(boost::filesystem::status(path, error));
}

inline bool isDirectory(const boost::filesystem::path& path) {
    boost::system::error_code error;
    return boost::filesystem::is_directory(path, error);
}

}  // namespace velextracta
