#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "executor/inside/NetRanking.h"
#include "reader/ViewFile.h"
#include "support/BlockSource.h"
#include "tkcore/report/ExtractaParserException.h"

// The ranking of a survey, computed in two ways that must agree: as "COUNT NET, ", or the text of
// the failure.

namespace velextracta {

/// Computed from the table of all records, in the simplest way.
inline std::string rankedFromTable(std::string_view text, const std::string& path) {
    ExtractaViewData table;
    try {
        parseViewText(text, path, table);
    } catch (const tkcore::ExtractaParserException& failure) {
        return failure.message();
    }
    const std::uint32_t column = table.columnIndex("NET_NAME");
    if (column == ExtractaViewData::kNoColumn) {
        return path + " has no NET_NAME column";
    }
    std::map<std::string, std::uint64_t, std::less<>> counts;
    for (std::size_t number = 0; number < table.records().size(); ++number) {
        const std::vector<std::string_view> fields(table.records()[number].begin(),
                                                   table.records()[number].end());
        if (fields.size() <= column) {
            return path + " record " + std::to_string(number + 1) +
                   " is too short for its NET_NAME column";
        }
        ++counts[std::string(fields[column])];
    }
    std::set<std::pair<std::uint64_t, std::string>, std::greater<>> nets;
    for (const auto& [name, count] : counts) {
        nets.emplace(count, name);
    }
    std::string ranking;
    for (const auto& [count, name] : nets) {
        ranking += std::to_string(count) + " " + name + ", ";
    }
    return ranking;
}

/// Computed while the text is read, as a run does it.
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
