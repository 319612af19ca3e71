#pragma once

#include <vector>

#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ViewType.h"

// Looks at the output before the first extraction, which may take hours: what is certain to fail
// at the end is a warning at the start. The run goes on all the same. What is found wrong here may
// be put right meanwhile, and nothing is left of the look.

namespace velextracta {

/// The names of the files that a run of the views is certain to make: all but those of split nets.
std::vector<tkcore::AString> expectedFileNames(const ViewSet& views);

/// About a design that would be replaced, and whatever keeps the archive from its place.
void warnAboutArchive(RunObserver& observer, const tkcore::LongFileName& archive,
                      const tkcore::LongFileName& design);

/// About a folder that files of these names cannot be moved into, and about those of the files that
/// they would replace that are designs, or cannot be replaced as things stand; those of split nets,
/// whose names only the survey tells, where an earlier run has left such.
void warnAboutFolder(RunObserver& observer, const tkcore::LongFileName& folder,
                     const std::vector<tkcore::AString>& names, const tkcore::LongFileName& design);

/// About a design's folder in which there can be no working directory.
void warnAboutDesignsFolder(RunObserver& observer, const tkcore::LongFileName& folder);

/// About added files that will not be packed, or will end the program: the names are those that
/// files have already where they will be copied to.
void warnAboutAddedFiles(RunObserver& observer, const std::vector<tkcore::AString>& files,
                         std::vector<tkcore::AString> names);

/// About the first of the folders that something is to be written to whose disk has less room than
/// the design takes.
void warnAboutRoom(RunObserver& observer, const std::vector<tkcore::LongFileName>& folders,
                   const tkcore::LongFileName& design);

}  // namespace velextracta
