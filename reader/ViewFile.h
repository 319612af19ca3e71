#pragma once

#include <string>
#include <string_view>

#include "reader/ExtractaViewData.h"
#include "reader/ViewReceiver.h"
#include "reader/inside/ViewWindow.h"

namespace velextracta {

/// Reads the view file at a narrow path into the table. Throws ExtractaParserException, naming the
/// file, when it cannot be read or is no view file; what was understood by then is in the table.
void readViewFile(const std::string& path, ExtractaViewData& data);

/// Does the same with a text that is already read; the path only names it in a failure.
void parseViewText(std::string_view text, const std::string& path, ExtractaViewData& data);

/// Reads the view file in blocks, as much of it as there was when it was opened, and gives each
/// record to the receiver, which alone decides what stays in memory. The failures are the same; a
/// request to end cuts it short.
void streamViewFile(const std::string& path, ViewReceiver& receiver);

/// Does the same with any text in blocks.
void streamView(ViewWindow& window, const std::string& path, ViewReceiver& receiver);

}  // namespace velextracta
