#include "executor/inside/NetRanking.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <tuple>

#include <boost/unordered/unordered_flat_map.hpp>

#include "tkcore/report/ExtractaParserException.h"
#include "views/ExtractaViewDef.h"

namespace velextracta {

namespace {

// Views of the survey's own texts: a survey has many records of few nets.
using NetRecordCounts = boost::unordered_flat_map<std::string_view, std::uint64_t>;

NetRecordCounts countRecordsByNet(const ExtractaViewData& survey, const std::string& path) {
    const std::uint32_t netNameColumn = survey.columnIndex(kNetNameField);
    if (netNameColumn == ExtractaViewData::kNoColumn) {
        throw tkcore::ExtractaParserException(path + " has no NET_NAME column");
    }
    NetRecordCounts counts;
    std::uint64_t recordNumber = 0;
    for (const FieldList& record : survey.records()) {
        ++recordNumber;
        const std::optional<std::string_view> netName = record.field(netNameColumn);
        if (!netName) {
            throw tkcore::ExtractaParserException(path + " record " + std::to_string(recordNumber) +
                                                  " is too short for its NET_NAME column");
        }
        ++counts[*netName];
    }
    return counts;
}

bool ranksBefore(const RankedNet& left, const RankedNet& right) {
    return std::tie(left.recordCount, left.netName) > std::tie(right.recordCount, right.netName);
}

}  // namespace

std::vector<RankedNet> rankNets(const ExtractaViewData& survey, const std::string& path) {
    const NetRecordCounts counts = countRecordsByNet(survey, path);
    std::vector<RankedNet> ranking;
    ranking.reserve(counts.size());
    for (const auto& [netName, recordCount] : counts) {
        ranking.push_back({recordCount, std::string(netName)});
    }
    std::sort(ranking.begin(), ranking.end(), ranksBefore);
    return ranking;
}

}  // namespace velextracta
