#pragma once

#include <vector>

#include "executor/inside/WorkingDirectory.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"

// What becomes of a working directory: how its entries get into an archive or another folder. Every
// failure is thrown and names the path it is about.

namespace velextracta {

/// The directory's top-level entries with the extension (empty: all), in the order the listing
/// delivers them; none if there is no such directory.
std::vector<tkcore::LongFileName> entriesWithExtension(const WorkingDirectory& directory,
                                                       const tkcore::AString& extension);

/// Throws a std::system_error if the target is the design, by whatever path, or another file that
/// is named like one (".mcm"): a slip of the command line, such as "*.mcm", makes it the output.
void refuseDesign(const tkcore::LongFileName& target, const tkcore::LongFileName& design);

/// Throws a std::system_error if the file would stand in the directory, and be removed with it.
void refuseInside(const tkcore::LongFileName& directory, const tkcore::LongFileName& file);

/// Moves the entries into the folder, over files of the same name; looks at all of these, for
/// designs and for what withstands it, before the first is moved. Throws Interrupted before that,
/// and never after it. If it fails half-way the log says which were moved.
void moveEntries(const std::vector<tkcore::LongFileName>& entries,
                 const tkcore::LongFileName& folder, const tkcore::LongFileName& design);

/// Copies the files into the directory; skips those that do not exist, which is logged.
void copyFiles(const std::vector<tkcore::AString>& files, const tkcore::LongFileName& directory);

}  // namespace velextracta
