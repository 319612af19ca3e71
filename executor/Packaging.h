#pragma once

#include <vector>

#include <boost/filesystem.hpp>

#include "tkcore/AString.h"
#include "tkcore/LongFileName.h"

// What becomes of a working directory: how its entries get into an archive or another folder. Used
// by ExtractaExecutor alone; every failure is thrown and names the path it is about.

namespace velextracta {

/// A directory's top-level entries with the extension (empty: all), in the order the listing
/// delivers them; none if there is no such directory.
std::vector<boost::filesystem::path> entriesWithExtension(const boost::filesystem::path& directory,
                                                          const tkcore::AString& extension);

/// Throws a filesystem error if the target is the design, by whatever path, or another file that
/// is named like one (".mcm"): a slip of the command line, such as "*.mcm", makes it the output.
void refuseDesign(const boost::filesystem::path& target, const tkcore::LongFileName& design);

/// Moves the entries into the directory, over files of the same name; checks all of them for
/// designs before the first is moved.
void moveEntries(const std::vector<boost::filesystem::path>& entries,
                 const boost::filesystem::path& directory, const tkcore::LongFileName& design);

/// Copies the files into the directory; skips those that do not exist.
void copyFiles(const std::vector<tkcore::AString>& files, const boost::filesystem::path& directory);

}  // namespace velextracta
