#pragma once

#include <cstdint>

#include "reader/inside/FieldList.h"

namespace velextracta {

/// Takes what ExtractaViewGrammar finds in a view file, record by record in the order of the file.
/// What it has been given stays given when the rest of the file turns out to be none of a view.
class ViewReceiver {
public:
    ViewReceiver() = default;
    ViewReceiver(const ViewReceiver&) = delete;
    ViewReceiver& operator=(const ViewReceiver&) = delete;
    virtual ~ViewReceiver() = default;

    virtual void addColumns(const FieldList& names) = 0;
    /// Both may take the fields out of the list.
    virtual void setJRecord(FieldList& fields) = 0;
    virtual void addSRecord(FieldList& fields) = 0;
    /// Comes once, behind the last S record, whatever follows it there.
    virtual void endSRecords() {}

    /// How many S records there are, for the text of a failure.
    [[nodiscard]] virtual std::uint64_t recordCount() const = 0;
};

}  // namespace velextracta
