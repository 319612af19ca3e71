#pragma once

#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ViewType.h"

// Doubts about a run that succeeds nevertheless. See tkcore::warn().

namespace velextracta {

/// Warns of more selected nets than a view can be restricted to, and of names that look like
/// mistakes: names that begin or end with a blank,
/// which counts as a part of the name, and names with a line break, which breaks the control file.
void warnAboutNames(const std::vector<tkcore::AString>& nets);

/// Warns of a view whose file is missing, is no view file or has other columns than asked for.
void warnAboutFile(ViewType viewType, const tkcore::LongFileName& file);

}  // namespace velextracta
