#pragma once

#include <string>
#include <string_view>

#include "reader/ExtractaViewData.h"

namespace velextracta {

/// Reads the view file at a narrow path into the table. Throws ExtractaParserException, naming the
/// file, when it cannot be read or is no view file; what was understood by then is in the table.
void readViewFile(const std::string& path, ExtractaViewData& data);

/// Does the same with a text that is already read; the path only names it in a failure.
void parseViewText(std::string_view text, const std::string& path, ExtractaViewData& data);

}  // namespace velextracta
