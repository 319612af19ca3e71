#include "app/StatusText.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <boost/format.hpp>

namespace velextracta {

namespace {

constexpr std::string_view kGap = "  ";

/// The parts of the line, the most important first. If the line is too long, the last is left out.
enum class Rank {
    kCount,
    kOldestExtraction,
    kMerging,
    kTimeLeft,
    kElapsed,
    kRate,
    kBytes,
    kWaiting,
    kOtherExtractions,
};

struct Part final {
    Rank rank;
    std::string text;
};
/// The parts in their order on the line.
using Parts = std::vector<Part>;

std::string countText(const RunStatus& status) {
    const std::size_t known = status.finished + status.running.size() + status.waiting;
    return (boost::format("%d/%d%s") % status.finished % std::max(known, status.expected) %
            (status.isAtLeast ? "+" : ""))
        .str();
}

void addProgress(Parts& parts, Rank rank, const char* what, const RunStatus::Progress& progress) {
    const auto all = static_cast<double>(progress.allBytes);
    const auto done = std::min(static_cast<double>(progress.bytes), all);
    const double percent = all > 0 ? 100 * done / all : 100;
    parts.push_back({rank, (boost::format("%s %d%%") % what % static_cast<int>(percent)).str()});
    parts.push_back({Rank::kBytes, bytesText(done) + " of " + bytesText(all)});
    if (progress.bytesPerSecond > 0) {
        parts.push_back({Rank::kRate, bytesText(progress.bytesPerSecond) + "/s"});
        const std::chrono::duration<double> left((all - done) / progress.bytesPerSecond);
        parts.push_back(
            {Rank::kTimeLeft, timeText(std::chrono::ceil<std::chrono::seconds>(left)) + " left"});
    }
}

void addExtractions(Parts& parts, const RunStatus& status) {
    Rank rank = Rank::kOldestExtraction;
    for (const RunStatus::Extraction& extraction : status.running) {
        parts.push_back({rank, extraction.name + ' ' + timeText(extraction.age)});
        rank = Rank::kOtherExtractions;
    }
    if (status.merging) {
        addProgress(parts, Rank::kMerging, "merging", *status.merging);
    }
    if (status.waiting > 0) {
        parts.push_back({Rank::kWaiting, (boost::format("+%d waiting") % status.waiting).str()});
    }
    if (status.writtenBytes > 0) {
        parts.push_back(
            {Rank::kBytes, bytesText(static_cast<double>(status.writtenBytes)) + " written"});
    }
}

/// Empties the parts that do not fit.
void fit(Parts& parts, std::size_t columns) {
    std::vector<Part*> byRank;
    for (Part& part : parts) {
        byRank.push_back(&part);
    }
    std::ranges::stable_sort(byRank, {}, &Part::rank);
    std::size_t used = 0;
    for (Part* part : byRank) {
        const std::size_t gap = used == 0 ? 0 : kGap.size();
        if (used > 0 && used + gap + part->text.size() > columns) {
            part->text.clear();
        } else {
            used += gap + part->text.size();
        }
    }
}

}  // namespace

std::string statusText(const RunStatus& status, std::size_t columns) {
    Parts parts;
    if (status.packing) {
        addProgress(parts, Rank::kCount, "packing", *status.packing);
    } else {
        parts.push_back({Rank::kCount, countText(status)});
        addExtractions(parts, status);
    }
    parts.insert(parts.begin() + 1, {Rank::kElapsed, timeText(status.elapsed)});
    fit(parts, columns);
    std::string line;
    for (const Part& part : parts) {
        line.append(line.empty() || part.text.empty() ? "" : kGap).append(part.text);
    }
    return line;
}

std::string bytesText(double bytes) {
    constexpr std::array kUnits{"KiB", "MiB", "GiB", "TiB"};
    constexpr double kThousand = 1024;
    constexpr double kLongest = 999.5;  // from here on a number has four digits
    if (bytes < kLongest) {
        return (boost::format("%.0f B") % bytes).str();
    }
    const auto* unit = kUnits.begin();
    bytes /= kThousand;
    while (bytes >= kLongest && unit + 1 != kUnits.end()) {
        bytes /= kThousand;
        ++unit;
    }
    return (boost::format(bytes < 9.95 ? "%.1f %s" : "%.0f %s") % bytes % *unit).str();
}

std::string timeText(std::chrono::seconds time) {
    const auto hours = time.count() / 3600;
    const auto minutes = time.count() / 60 % 60;
    const auto seconds = time.count() % 60;
    return hours > 0 ? (boost::format("%d:%02d:%02d") % hours % minutes % seconds).str()
                     : (boost::format("%d:%02d") % minutes % seconds).str();
}

}  // namespace velextracta
