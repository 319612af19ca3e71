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

/// About selected nets that no list of names is meant to hold: with a blank at an end of their
/// name, which then is a part of it, or with a line break in it, which breaks the control file.
void warnAboutNames(RunObserver& observer, const std::vector<tkcore::AString>& nets);

/// About a view whose file is missing or does not begin like a view file.
void warnAboutFile(RunObserver& observer, ViewType viewType, const tkcore::LongFileName& file);

}  // namespace velextracta
