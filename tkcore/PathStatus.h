#pragma once

#include <cstdint>

#include <boost/filesystem.hpp>

namespace tkcore {

/// Whether the path leads to anything. False also if the system refuses to look (too long a name, a
/// closed folder): whoever goes on with the path then gets the reason from the system.
bool isThere(const boost::filesystem::path& path);

/// Whether the path leads to a directory; false also if the system refuses to look.
bool isDirectory(const boost::filesystem::path& path);

/// The bytes of the regular file that the path leads to; 0 if it leads to none.
std::uint64_t fileSize(const boost::filesystem::path& path);

/// Whether both paths lead to one file, through whatever links and spellings.
bool isSameFile(const boost::filesystem::path& left, const boost::filesystem::path& right);

/// Whether the path, or a name in it, is longer than the system can take.
bool isTooLong(const boost::filesystem::path& path);

/// Whether the system takes the path, or a name in it, for something else than what it says: a
/// device, or the file of another name. No file is ever there.
bool isReserved(const boost::filesystem::path& path);

}  // namespace tkcore
