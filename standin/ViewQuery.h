#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standin/ControlFile.h"
#include "standin/Database.h"
#include "standin/OutputFile.h"

namespace standin {

// How much of a view file is written, and how; all but kWhole is damage on purpose.
enum class OutputShape { kWhole, kNone, kEmpty, kHalfHeader, kHeaderOnly, kBareLineFeeds };

// One view block as a query on the design. The constructor throws if the design lacks the view or
// a field; the block and the database must outlive the query.
class ViewQuery final {
public:
    ViewQuery(const Database& design, const ViewBlock& block);

    // Streams header, J record and the S records in memory of a fixed size. The J record's fields
    // come from outside, since they tell of the design and not of the view.
    void writeTo(const std::string& outputPath, const std::vector<std::string>& jFields,
                 OutputShape shape);

private:
    ViewQuery(const Database& design, const ViewBlock& block,
              const std::vector<std::string>& columns);

    std::vector<std::string> fields;
    Statement statement;
};

// The fields of the J record: the design's path as given, then its properties as far as it has any.
std::vector<std::string> designRecord(const Database& design, const std::string& designPath);

}  // namespace standin
