#pragma once

#include <vector>

#include "tkcore/AString.h"
#include "views/ActiveView.h"
#include "views/RunObserver.h"

// Doubts about a run that succeeds all the same: each goes to the log, as a failure would, and to
// the observer.

namespace velextracta {

void warn(RunObserver& observer, const tkcore::AString& text);

/// About selected nets with a blank at an end of their name: no list of names is meant to hold one.
void warnAboutBlanks(RunObserver& observer, const std::vector<tkcore::AString>& nets);

/// About a view whose file is missing or does not begin like a view file.
void warnAboutFile(RunObserver& observer, const ActiveView& view);

}  // namespace velextracta
