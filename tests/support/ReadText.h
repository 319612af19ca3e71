#pragma once

#include <string>

#include "reader/ViewFile.h"
#include "support/TemporaryDirectory.h"
#include "tkcore/ExtractaParserException.h"

namespace velextracta {

/// Reads a view file of this text. Returns the failure's message, "FILE" for the path, or nothing.
inline std::string readText(const std::string& text, ExtractaViewData& data) {
    const TemporaryDirectory directory;
    const std::string path = (directory / "nets.txt").string();
    writeFile(path, text);
    try {
        readViewFile(path, data);
        return {};
    } catch (const tkcore::ExtractaParserException& failure) {
        std::string message = failure.what();
        const auto place = message.find(path);
        return place == std::string::npos ? message : message.replace(place, path.size(), "FILE");
    }
}

}  // namespace velextracta
