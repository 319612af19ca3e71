#include "executor/Warnings.h"

#include <string>

#include "reader/ViewFileInput.h"
#include "tkcore/Log.h"

namespace velextracta {

using tkcore::AString;

void warn(RunObserver& observer, const AString& text) {
    tkcore::VelDebug(0, "warning: %s", text);
    observer.warned(text);
}

void warnAboutBlanks(RunObserver& observer, const std::vector<AString>& nets) {
    for (const AString& net : nets) {
        if (net.wide().starts_with(L' ') || net.wide().ends_with(L' ')) {
            warn(observer, "the selected net \"" + net + "\" has a blank at an end of its name");
        }
    }
}

void warnAboutFile(RunObserver& observer, const ActiveView& view) {
    const std::string doubt = doubtAboutViewFile(VEL_ANSI(view.path));
    if (!doubt.empty()) {
        warn(observer, "the view " + ViewTypeName(view.viewType) + " is doubtful: " + view.path +
                           ": " + doubt);
    }
}

}  // namespace velextracta
