#include "executor/inside/NetRanking.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <tuple>

#include "tkcore/report/ExtractaParserException.h"
#include "views/ExtractaViewDef.h"

namespace velextracta {

namespace {

bool ranksBefore(const RankedNet& left, const RankedNet& right) {
    return std::tie(left.recordCount, left.netName) > std::tie(right.recordCount, right.netName);
}

}  // namespace

void NetSurvey::addColumns(const FieldList& names) {
    header.addColumns(names);
    netNameColumn = header.columnIndex(kNetNameField);
}

void NetSurvey::addSRecord(FieldList& fields) {
    ++records;
    // A short record fails only later, in the ranking: if the file is no view, that failure comes
    // first.
    if (const std::optional<std::string_view> netName = fields.field(netNameColumn)) {
        ++net(*netName).recordCount;
    } else if (firstShortRecord == 0) {
        firstShortRecord = records;
    }
}

RankedNet& NetSurvey::net(std::string_view name) {
    if (const auto known = netsByName.find(name); known != netsByName.end()) {
        return *known->second;
    }
    RankedNet& added = nets.emplace_back(RankedNet{0, std::string(name)});
    netsByName.emplace(added.netName, &added);
    return added;
}

std::vector<RankedNet> NetSurvey::takeRanking(const std::string& path) {
    if (netNameColumn == ExtractaViewData::kNoColumn) {
        throw tkcore::ExtractaParserException(path + " has no NET_NAME column");
    }
    if (firstShortRecord != 0) {
        throw tkcore::ExtractaParserException(path + " record " + std::to_string(firstShortRecord) +
                                              " is too short for its NET_NAME column");
    }
    netsByName.clear();
    std::vector<RankedNet> ranking(std::move_iterator(nets.begin()),
                                   std::move_iterator(nets.end()));
    nets.clear();
    std::sort(ranking.begin(), ranking.end(), ranksBefore);
    return ranking;
}

}  // namespace velextracta
