#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "reader/inside/FieldList.h"

namespace velextracta {

/// The table of one view file: the columns of its header, its J record and its S records. It owns
/// all its texts. readViewFile fills it once, by the grammar.
class ExtractaViewData final {
public:
    using Records = std::deque<FieldList>;  // grows without moving or copying its elements

    static constexpr std::uint32_t kNoColumn = 0xFFFFFFFF;

    /// Adds each name with the number of columns before it as its index. A name that comes again
    /// gets a new index. Throws ExtractaParserException if there are records already.
    void addColumns(const FieldList& names);

    /// The setters swap: the argument receives the table's old content.
    void setJRecord(FieldList& fields);
    void setSRecords(Records& rows);

    /// The index of the column's field in a record, or kNoColumn. A record may be too short to have
    /// that field.
    [[nodiscard]] std::uint32_t columnIndex(std::string_view name) const;

    [[nodiscard]] const Records& records() const noexcept { return sRecords; }
    [[nodiscard]] const FieldList& jFields() const noexcept { return jRecord; }

private:
    std::map<std::string, std::uint32_t, std::less<>> columns;
    Records sRecords;
    FieldList jRecord;
};

}  // namespace velextracta
