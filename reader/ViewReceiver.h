#pragma once

#include <cstdint>

#include "reader/inside/FieldList.h"

namespace velextracta {

/// Takes the records that ExtractaViewGrammar finds in a view file, in the order of the file. It
/// keeps them even if the rest of the file cannot be parsed.
class ViewReceiver {
public:
    ViewReceiver() = default;
    ViewReceiver(const ViewReceiver&) = delete;
    ViewReceiver& operator=(const ViewReceiver&) = delete;
    virtual ~ViewReceiver() = default;

    virtual void addColumns(const FieldList& names) = 0;
    /// This and addSRecord() may move the fields out of the list.
    virtual void setJRecord(FieldList& fields) = 0;
    virtual void addSRecord(FieldList& fields) = 0;
    /// Called once, after the last S record, whatever follows it in the file.
    virtual void endSRecords() {}

    /// The number of S records, for the text of a failure.
    [[nodiscard]] virtual std::uint64_t recordCount() const = 0;
};

}  // namespace velextracta
