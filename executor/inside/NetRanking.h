#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include "reader/ExtractaViewData.h"
#include "reader/ViewReceiver.h"

namespace velextracta {

/// A net and the number of its connectivity records.
struct RankedNet {
    std::uint64_t recordCount = 0;
    std::string netName;
};

/// Counts the records of each net while a survey is read. Keeps only the nets in memory, because a
/// survey has a record for every piece of metal of a design.
class NetSurvey final : public ViewReceiver {
public:
    void addColumns(const FieldList& names) override;
    void setJRecord(FieldList& /*fields*/) override {}
    void addSRecord(FieldList& fields) override;
    std::uint64_t recordCount() const override { return records; }

    /// Returns the nets, those with most records first. Nets with equally many are in descending
    /// byte order of their names. Throws ExtractaParserException, naming the surveyed file, if it
    /// has no NET_NAME column or a record ends before that column.
    std::vector<RankedNet> takeRanking(const std::string& path);

private:
    RankedNet& net(std::string_view name);

    ExtractaViewData header;  // the columns, without records
    std::uint32_t netNameColumn = ExtractaViewData::kNoColumn;
    std::uint64_t records = 0;
    std::uint64_t firstShortRecord = 0;  // counted from 1; 0 while there is none
    std::deque<RankedNet> nets;          // in order of first appearance; elements do not move
    boost::unordered_flat_map<std::string_view, RankedNet*> netsByName;  // views of their names
};

}  // namespace velextracta
