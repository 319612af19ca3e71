#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tkcore/AString.h"
#include "tkcore/OutputFile.h"

namespace velextracta {

/// Puts connectivity view files behind each other in one combined file, under the two header
/// lines of the first. Owned by the parallel run for as long as it merges. Throws
/// ExtractaParserException, naming the file.
class ConnectivityMerge final {
public:
    /// Called between two parts of a large file with the bytes of the part before, for others that
    /// wait meanwhile; may throw.
    using Meanwhile = std::function<void(std::size_t bytes)>;

    /// A combined file that cannot be opened shows when the first file is added.
    explicit ConnectivityMerge(
        const tkcore::AString& combinedPath, Meanwhile whatToDo = [](std::size_t) {});

    /// The doubt about the file's header lines, for a warning; empty if there is none.
    std::string append(const tkcore::AString& path);

private:
    void write(std::string_view bytes);

    std::optional<tkcore::OutputFile> combined;
    Meanwhile meanwhile;
    bool isFirst = true;
};

}  // namespace velextracta
