#include "app/StatusText.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <boost/format.hpp>

namespace velextracta {

namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kFewestWords = 8;  // characters of a warning that are worth showing

/// What has no room gives way to what stands before it here.
enum class Rank {
    kCount,
    kWarnings,
    kOldestExtraction,
    kMerging,
    kNewWarning,
    kTimeLeft,
    kRate,
    kBytes,
    kWaiting,
    kOtherExtractions,
    kOldWarning,
};

struct Part final {
    Rank rank;
    std::wstring text;
    bool mayBeCut = false;
};
/// In the order in which they are shown.
using Parts = std::vector<Part>;

void add(Parts& parts, Rank rank, const std::string& text) {
    parts.push_back({rank, std::wstring(text.begin(), text.end())});
}

std::string bytesText(double bytes) {
    constexpr std::array kUnits{"KiB", "MiB", "GiB", "TiB"};
    constexpr double kThousand = 1024;
    constexpr double kLongest = 999.5;  // from here on it takes four digits
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

void addProgress(Parts& parts, Rank rank, const char* what, const RunStatus::Progress& progress) {
    const auto all = static_cast<double>(progress.allBytes);
    const auto done = std::min(static_cast<double>(progress.bytes), all);
    const double percent = all > 0 ? 100 * done / all : 100;
    add(parts, rank, (boost::format("%s %d%%") % what % static_cast<int>(percent)).str());
    add(parts, Rank::kBytes, bytesText(done) + " of " + bytesText(all));
    if (progress.bytesPerSecond > 0) {
        add(parts, Rank::kRate, bytesText(progress.bytesPerSecond) + "/s");
        const std::chrono::duration<double> left((all - done) / progress.bytesPerSecond);
        add(parts, Rank::kTimeLeft,
            timeText(std::chrono::ceil<std::chrono::seconds>(left)) + " left");
    }
}

void addExtractions(Parts& parts, const RunStatus& status) {
    add(parts, Rank::kCount,
        (boost::format("%d/%d") % status.finished %
         (status.finished + status.running.size() + status.waiting))
            .str());
    Rank rank = Rank::kOldestExtraction;
    for (const RunStatus::Extraction& extraction : status.running) {
        add(parts, rank, extraction.name + ' ' + timeText(extraction.age));
        rank = Rank::kOtherExtractions;
    }
    if (status.merging) {
        addProgress(parts, Rank::kMerging, "merging", *status.merging);
    }
    if (status.waiting > 0) {
        add(parts, Rank::kWaiting, (boost::format("+%d waiting") % status.waiting).str());
    }
    if (status.writtenBytes > 0) {
        add(parts, Rank::kBytes, bytesText(static_cast<double>(status.writtenBytes)));
    }
}

void addWarnings(Parts& parts, const RunStatus& status) {
    if (status.warnings == 0) {
        return;
    }
    const char* format = status.warnings == 1 ? "%d warning" : "%d warnings";
    add(parts, Rank::kWarnings, (boost::format(format) % status.warnings).str());
    parts.push_back(
        {status.isWarningNew ? Rank::kNewWarning : Rank::kOldWarning, status.lastWarning, true});
}

/// Empties the parts that have no room.
void fit(Parts& parts, std::size_t columns) {
    std::vector<Part*> byRank;
    for (Part& part : parts) {
        byRank.push_back(&part);
    }
    std::ranges::stable_sort(byRank, {}, &Part::rank);
    std::size_t used = 0;
    for (Part* part : byRank) {
        const std::size_t gap = used == 0 ? 0 : kGap.size();
        const std::size_t room = columns - std::min(columns, used + gap);
        if (part->mayBeCut && room >= kFewestWords) {
            part->text.resize(std::min(part->text.size(), room));
        }
        if (part->text.size() > room && used > 0) {
            part->text.clear();
        } else {
            used += gap + part->text.size();
        }
    }
}

}  // namespace

std::wstring statusText(const RunStatus& status, std::size_t columns) {
    Parts parts;
    if (status.packing) {
        addProgress(parts, Rank::kCount, "packing", *status.packing);
    } else {
        addExtractions(parts, status);
    }
    addWarnings(parts, status);
    fit(parts, columns);
    std::wstring line;
    for (const Part& part : parts) {
        if (!line.empty() && !part.text.empty()) {
            line.append(kGap.begin(), kGap.end());
        }
        line += part.text;
    }
    return line;
}

}  // namespace velextracta
