#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "executor/inside/NetRanking.h"
#include "reader/ViewFile.h"
#include "support/BlockSource.h"
#include "tkcore/report/ExtractaParserException.h"

namespace velextracta {

/// The ranking of a survey as "COUNT NET, ", or the text of the failure. Computed while the text is
/// read, as a run does it.
inline std::string rankedInSteps(std::string_view text, const std::string& path,
                                 std::size_t mostAtOnce) {
    ViewWindow window(inSteps(text, mostAtOnce), mostAtOnce);
    NetSurvey survey;
    std::string ranking;
    try {
        streamView(window, path, survey);
        for (const RankedNet& net : survey.takeRanking(path)) {
            ranking += std::to_string(net.recordCount) + " " + net.netName + ", ";
        }
    } catch (const tkcore::ExtractaParserException& failure) {
        return failure.message();
    }
    return ranking;
}

}  // namespace velextracta
