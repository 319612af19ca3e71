#include "executor/inside/Warnings.h"

#include <string>

#include "reader/ViewFileDoubts.h"
#include "tkcore/report/Log.h"
#include "views/ExtractaViewDef.h"

namespace velextracta {

using tkcore::AString;

void warnAboutNames(const std::vector<AString>& nets) {
    if (nets.size() > kMostFilteredNets) {
        tkcore::warn(AString::Format("%d nets are selected: more than %d restrict no view",
                                     nets.size(), kMostFilteredNets));
    }
    for (const AString& net : nets) {
        if (net.wide().starts_with(L' ') || net.wide().ends_with(L' ')) {
            tkcore::warn("the selected net \"" + net + "\" has a blank at an end of its name");
        }
        if (net.wide().find_first_of(L"\r\n") != std::wstring::npos) {
            tkcore::warn("the selected net \"" + net + "\" has a line break in its name");
        }
    }
}

void warnAboutFile(ViewType viewType, const tkcore::LongFileName& file) {
    const ExtractaViewDef request(viewType, {}, false);
    for (const std::string& doubt : doubtsAboutViewFile(file, request.fields)) {
        tkcore::warn("the view " + ViewTypeName(viewType) + " is doubtful: " + file.FilePath() +
                     ": " + doubt);
    }
}

}  // namespace velextracta
