#include "reader/ExtractaViewData.h"

#include "tkcore/report/ExtractaParserException.h"

namespace velextracta {

void ExtractaViewData::addColumns(const FieldList& names) {
    for (const std::string_view name : names) {
        if (!sRecords.empty()) {
            throw tkcore::ExtractaParserException(
                "View Data: Cannot add header information after data has been bound.");
        }
        const auto index = static_cast<std::uint32_t>(columns.size());
        columns.insert_or_assign(std::string(name), index);
    }
}

void ExtractaViewData::setJRecord(FieldList& fields) {
    jRecord.swap(fields);
}

void ExtractaViewData::setSRecords(Records& rows) {
    sRecords.swap(rows);
}

std::uint32_t ExtractaViewData::columnIndex(std::string_view name) const {
    const auto column = columns.find(name);
    return column == columns.end() ? kNoColumn : column->second;
}

}  // namespace velextracta
