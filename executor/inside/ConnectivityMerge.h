#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>

#include "tkcore/files/LongFileName.h"
#include "tkcore/files/OutputFile.h"

namespace velextracta {

/// Puts connectivity view files behind each other in one combined file, made anew, under the two
/// header lines of the first. Owned by the parallel run for as long as it merges. Throws
/// ExtractaParserException, naming the file.
class ConnectivityMerge final {
public:
    /// Called between two parts of a large file with the bytes of the part just merged, so that
    /// other work need not wait; may throw.
    using Meanwhile = std::function<void(std::size_t bytes)>;

    /// Does not fail: a combined file that cannot be opened makes the first append() throw.
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
