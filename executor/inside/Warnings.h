#pragma once

#include <vector>

#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ViewType.h"

// Doubts about a run that succeeds all the same: each goes to the log, as a failure would, and to
// the observer.

namespace velextracta {

void warn(RunObserver& observer, const tkcore::AString& text);

/// About selected nets whose names look like a slip: one that begins or ends with a blank, which is
/// taken for a part of the name, or one with a line break, which breaks the control file.
void warnAboutNames(RunObserver& observer, const std::vector<tkcore::AString>& nets);

/// About a view whose file is missing, is no view file or has not the columns that were asked for.
void warnAboutFile(RunObserver& observer, ViewType viewType, const tkcore::LongFileName& file);

}  // namespace velextracta
