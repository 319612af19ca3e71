#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velextracta {

/// What a run is at, as far as its status line shows it.
struct RunStatus final {
    struct Extraction {
        std::string name;
        std::chrono::seconds age{};
    };
    struct Progress {
        std::uint64_t bytes = 0;
        std::uint64_t allBytes = 0;
        double bytesPerSecond = 0;  // 0: not known yet
    };

    std::size_t finished = 0;
    std::vector<Extraction> running;  // the oldest first
    std::size_t waiting = 0;
    std::uint64_t writtenBytes = 0;
    std::optional<Progress> merging;
    std::optional<Progress> packing;  // everything is extracted
    std::size_t warnings = 0;
    std::wstring lastWarning;
    bool isWarningNew = false;  // its words go before what else there is to show
};

/// The status in one line that takes the columns at most, unless these are too few for the first
/// word or characters of the last warning are wide: what has no room is left out, the least
/// important first.
std::wstring statusText(const RunStatus& status, std::size_t columns);

}  // namespace velextracta
