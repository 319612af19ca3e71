#pragma once

#include <string>
#include <string_view>

#include "reader/ExtractaViewData.h"
#include "reader/ViewReceiver.h"
#include "reader/inside/ViewWindow.h"
#include "tkcore/files/LongFileName.h"

namespace velextracta {

/// Reads the view file at a narrow path into the table. Throws ExtractaParserException, naming the
/// file, if it cannot be read or is no view file. The records before the failure are in the table.
void readViewFile(const std::string& path, ExtractaViewData& data);

/// Does the same with a text in memory. The path is only for the text of a failure.
void parseViewText(std::string_view text, const std::string& path, ExtractaViewData& data);

/// Reads the view file in blocks, up to its size at the time of opening, and gives each record to
/// the receiver. Only the receiver decides what stays in memory. The failures are the same. A
/// request to end throws Interrupted.
void streamViewFile(const tkcore::LongFileName& file, ViewReceiver& receiver);

/// Does the same with a text in blocks.
void streamView(ViewWindow& window, const std::string& path, ViewReceiver& receiver);

}  // namespace velextracta
