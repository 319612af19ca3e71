#pragma once

#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ViewType.h"

// Checks the output before the first extraction: a run may take hours, so a delivery that is
// certain to fail gives a warning at the start. The run goes on all the same, as the user may
// remove the obstacle meanwhile. The checks leave nothing behind.

namespace velextracta {

/// The names of the files that a run of the views is certain to make: all but those of split nets,
/// whose names are not known yet.
std::vector<tkcore::AString> expectedFileNames(const ViewSet& views);

/// Warns of a design that would be replaced, and of any obstacle at the archive's path.
void warnAboutArchive(const tkcore::LongFileName& archive, const tkcore::LongFileName& design);

/// Warns of a folder that files of these names cannot be moved into. Warns of files there that they
/// would replace but cannot: designs, and files that cannot be replaced at present. Checks files of
/// split nets, too, under the names of an earlier run: only the survey gives those of this run.
void warnAboutFolder(const tkcore::LongFileName& folder, const std::vector<tkcore::AString>& names,
                     const tkcore::LongFileName& design);

/// Warns of a design's folder in which no working directory can be made.
void warnAboutDesignsFolder(const tkcore::LongFileName& folder);

/// Warns of added files that will not be packed, or will end the program. The names are those of
/// files that will already be in the working directory.
void warnAboutAddedFiles(const std::vector<tkcore::AString>& files,
                         std::vector<tkcore::AString> names);

/// Warns of the first folder whose disk has less free space than the size of the design, if that is
/// at least a megabyte. The run will write to all these folders.
void warnAboutRoom(const std::vector<tkcore::LongFileName>& folders,
                   const tkcore::LongFileName& design);

}  // namespace velextracta
