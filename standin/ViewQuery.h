#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standin/ControlFile.h"
#include "standin/Database.h"
#include "standin/OutputFile.h"

namespace standin {

// What to write of a view file. All values but kWhole damage it on purpose.
enum class OutputShape { kWhole, kNone, kEmpty, kHalfHeader, kHeaderOnly, kBareLineFeeds };

// A view block as a query on the design. The constructor throws if the design does not have the
// view or a field. The block and the database must outlive the query.
class ViewQuery final {
public:
    ViewQuery(const Database& design, const ViewBlock& block);

    // Streams header, J record and S records in memory of a fixed size. The J record's fields are
    // an argument because they describe the design, not the view.
    void writeTo(const std::string& outputPath, const std::vector<std::string>& jFields,
                 OutputShape shape);

private:
    ViewQuery(const Database& design, const ViewBlock& block,
              const std::vector<std::string>& columns);

    std::vector<std::string> fields;
    Statement statement;
};

// The fields of the J record: the design's path as given, then its properties, if it has any.
std::vector<std::string> designRecord(const Database& design, const std::string& designPath);

}  // namespace standin
