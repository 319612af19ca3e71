#pragma once

#include <vector>

#include <boost/filesystem.hpp>

#include "tkcore/LongFileName.h"
#include "views/RunObserver.h"

// Looks at the output before the first extraction, which may take hours: what is certain to fail
// at the end is a warning at the start. The run goes on all the same. What is found wrong here may
// be put right meanwhile, and nothing is left of the look.

namespace velextracta {

/// About a design that would be replaced, and whatever keeps the archive from its place.
void warnAboutArchive(RunObserver& observer, const boost::filesystem::path& archive,
                      const tkcore::LongFileName& design);

/// About a folder that files of these names cannot be moved into, and about a design among those
/// that they would replace.
void warnAboutFolder(RunObserver& observer, const boost::filesystem::path& folder,
                     const std::vector<boost::filesystem::path>& names,
                     const tkcore::LongFileName& design);

/// About the first of the folders that something is to be written to whose disk has less room than
/// the design takes.
void warnAboutRoom(RunObserver& observer, const std::vector<boost::filesystem::path>& folders,
                   const tkcore::LongFileName& design);

}  // namespace velextracta
