#pragma once

#include <vector>

#include "executor/inside/WorkingDirectory.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"

// Delivers the entries of a working directory into an archive or another folder. Every failure is
// thrown and names the path it is about.

namespace velextracta {

/// The directory's top-level entries with the extension (empty: all), in the order of the listing;
/// none if the directory does not exist.
std::vector<tkcore::LongFileName> entriesWithExtension(const WorkingDirectory& directory,
                                                       const tkcore::AString& extension);

/// Throws a std::system_error if the target is the design, whatever path leads to it, or another
/// file named like one (".mcm"). A mistake on the command line, such as "*.mcm", makes a design the
/// output.
void refuseDesign(const tkcore::LongFileName& target, const tkcore::LongFileName& design);

/// Throws a std::system_error if the file is in the directory and would be removed with it.
void refuseInside(const tkcore::LongFileName& directory, const tkcore::LongFileName& file);

/// Moves the entries into the folder and replaces files of the same name. Before the first move it
/// checks all those files for designs and obstacles. Throws Interrupted only before the first move.
/// If a later move fails, the log says which entries were moved.
void moveEntries(const std::vector<tkcore::LongFileName>& entries,
                 const tkcore::LongFileName& folder, const tkcore::LongFileName& design);

/// Copies the files into the directory. Skips those that do not exist, and logs that.
void copyFiles(const std::vector<tkcore::AString>& files, const tkcore::LongFileName& directory);

}  // namespace velextracta
