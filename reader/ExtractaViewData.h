#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "reader/inside/FieldList.h"

namespace velextracta {

/// The table of one view file: the columns its header names, its J record and its S records.
/// It owns all its texts. Filled once, by the grammar, for whoever asks readViewFile for it.
class ExtractaViewData final {
public:
    using Records = std::deque<FieldList>;  // grows without moving, or holding twice, what it has

    static constexpr std::uint32_t kNoColumn = 0xFFFFFFFF;

    /// Enters each name with the number of columns there are by then as its index, so a name that
    /// comes again takes a new index. Throws ExtractaParserException once there are records.
    void addColumns(const FieldList& names);

    /// The setters exchange: the argument receives what the table held.
    void setJRecord(FieldList& fields);
    void setSRecords(Records& rows);

    /// The place of the column's field in a record, or kNoColumn. No record is promised to be long
    /// enough to have that place.
    [[nodiscard]] std::uint32_t columnIndex(std::string_view name) const;

    [[nodiscard]] const Records& records() const noexcept { return sRecords; }
    [[nodiscard]] const FieldList& jFields() const noexcept { return jRecord; }

private:
    std::map<std::string, std::uint32_t, std::less<>> columns;
    Records sRecords;
    FieldList jRecord;
};

}  // namespace velextracta
