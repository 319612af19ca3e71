#pragma once

#include <cstdint>
#include <utility>

#include "reader/ExtractaViewData.h"
#include "reader/ViewReceiver.h"

namespace velextracta {

/// Puts all records into a table, which must outlive it.
class TableReceiver final : public ViewReceiver {
public:
    explicit TableReceiver(ExtractaViewData& table) : data(table) {}

    void addColumns(const FieldList& names) override { data.addColumns(names); }
    void setJRecord(FieldList& fields) override { data.setJRecord(fields); }
    void addSRecord(FieldList& fields) override { records.push_back(std::move(fields)); }
    void endSRecords() override { data.setSRecords(records); }
    std::uint64_t recordCount() const override { return data.records().size(); }

private:
    ExtractaViewData& data;
    ExtractaViewData::Records records;
};

}  // namespace velextracta
