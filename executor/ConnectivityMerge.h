#pragma once

#include <fstream>
#include <vector>

#include "tkcore/AString.h"

namespace velextracta {

/// Puts connectivity view files behind each other in one combined file, under the two header
/// lines of the first. Throws ExtractaParserException, naming the file.
class ConnectivityMerge final {
public:
    /// A combined file that cannot be opened shows when the first file is added.
    explicit ConnectivityMerge(const tkcore::AString& combinedPath);

    void append(const tkcore::AString& path);

private:
    void appendRecords(std::ifstream& input);

    std::ofstream combined;
    bool first = true;
    std::vector<char> buffer;
};

}  // namespace velextracta
