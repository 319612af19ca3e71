#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velextracta {

/// The part of a run's state that its status line shows.
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
    std::size_t expected = 0;  // number of all extractions; 0: not known
    bool isAtLeast = false;    // there may be more
    std::chrono::seconds elapsed{};
    std::uint64_t writtenBytes = 0;
    std::optional<Progress> merging;
    std::optional<Progress> packing;  // everything is extracted
};

/// The status in one line of at most so many columns. Parts that do not fit are left out, the least
/// important first. The first word always stays.
std::string statusText(const RunStatus& status, std::size_t columns);

/// "12 MiB", and "1:02:03" or "2:03".
std::string bytesText(double bytes);
std::string timeText(std::chrono::seconds time);

}  // namespace velextracta
