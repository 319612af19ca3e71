#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>

#include "tkcore/files/LongFileName.h"
#include "tkcore/files/OutputFile.h"

namespace velextracta {

/// Joins connectivity view files to a new combined file, with the two header lines of the first.
/// The parallel run owns it while it merges. Throws ExtractaParserException, naming the file.
class ConnectivityMerge final {
public:
    /// Called after each part of a large file with the number of bytes merged, so that other work
    /// need not wait. May throw.
    using Meanwhile = std::function<void(std::size_t bytes)>;

    /// Does not fail. If the combined file cannot be opened, the first append() throws.
    explicit ConnectivityMerge(
        const tkcore::LongFileName& combinedFile, Meanwhile whatToDo = [](std::size_t) {});

    void append(const tkcore::LongFileName& piece);

private:
    void write(std::span<const char> bytes);

    std::optional<tkcore::OutputFile> combined;
    Meanwhile meanwhile;
    bool isFirst = true;
};

}  // namespace velextracta
