#include "app/StatusLine.h"

#include <algorithm>
#include <string>

#include "tkcore/files/PathStatus.h"

namespace velextracta {

using tkcore::AString;

namespace {

constexpr std::chrono::milliseconds kBetweenTwo{100};
/// A rate over a shorter time is meaningless.
constexpr std::chrono::duration<double> kShortestTime{0.5};

/// The name of an extraction in the status line: "survey", "remainder", or the view's name. A long
/// name is shown by its beginning and its end.
std::string shownName(const AString& name) {
    constexpr std::size_t kLongest = 20;
    constexpr std::size_t kHead = 11;
    constexpr std::size_t kTail = kLongest - kHead - 1;
    const std::string text = VEL_ANSI(name);
    if (text == "connnets" || text == "connremainder") {
        return text == "connnets" ? "survey" : "remainder";
    }
    return text.size() <= kLongest ? text
                                   : text.substr(0, kHead) + "~" + text.substr(text.size() - kTail);
}

}  // namespace

void StatusLine::expected(std::size_t count, bool isAtLeast) {
    expectedCount = count;
    isExpectedAtLeast = isAtLeast;
    show();
}

void StatusLine::extractionQueued(const AString& name) {
    queued.push_back(name);
    show();
}

void StatusLine::extractionStarted(const AString& name, const AString& path) {
    std::erase(queued, name);
    running.push_back({name, tkcore::LongFileName(path), Clock::now()});
    show();
}

void StatusLine::extractionFinished(const AString& name) {
    const auto extraction = std::ranges::find(running, name, &Extraction::name);
    if (extraction != running.end()) {
        ++finished;
        finishedBytes += tkcore::fileSize(extraction->file);
        running.erase(extraction);
    }
    show();
}

void StatusLine::merged(std::uint64_t bytes, std::uint64_t all) {
    merging.note(bytes, all);
    show();
}

void StatusLine::packed(std::uint64_t bytes, std::uint64_t all) {
    isPacking = true;
    packing.note(bytes, all);
    show();
}

std::chrono::seconds StatusLine::elapsed() const {
    return std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
}

void StatusLine::Work::note(std::uint64_t bytesDone, std::uint64_t bytesOfAll) {
    if (!isUnderWay()) {
        start = Clock::now();
        startBytes = bytesDone;
    }
    bytes = bytesDone;
    all = bytesOfAll;
}

RunStatus::Progress StatusLine::Work::progress(Clock::time_point now) const {
    const std::chrono::duration<double> time = now - start;
    // If a piece grows during the merge, the number of bytes may become smaller: after the piece
    // the merge reports the size that the piece had when its extraction ended.
    const auto workedBytes = static_cast<double>(bytes - std::min(startBytes, bytes));
    return {bytes, all, time < kShortestTime ? 0 : workedBytes / time.count()};
}

void StatusLine::show() {
    const Clock::time_point now = Clock::now();
    if (now < nextTime) {
        return;
    }
    line.show(AString(statusText(status(now), line.columns())).wide());
    nextTime = now + kBetweenTwo;
}

std::chrono::milliseconds StatusLine::restTime() const {
    return line.isPossible()
               ? std::max(std::chrono::ceil<std::chrono::milliseconds>(nextTime - Clock::now()),
                          std::chrono::milliseconds(1))
               : RunObserver::restTime();
}

RunStatus StatusLine::status(Clock::time_point now) const {
    RunStatus status;
    status.expected = expectedCount;
    status.isAtLeast = isExpectedAtLeast;
    status.elapsed = elapsed();
    status.finished = finished;
    status.waiting = queued.size();
    status.writtenBytes = finishedBytes;
    for (const Extraction& extraction : running) {
        status.running.push_back(
            {shownName(extraction.name),
             std::chrono::duration_cast<std::chrono::seconds>(now - extraction.start)});
        status.writtenBytes += tkcore::fileSize(extraction.file);
    }
    if (merging.isUnderWay()) {
        status.merging = merging.progress(now);
    }
    if (isPacking) {
        status.packing = packing.progress(now);
    }
    return status;
}

}  // namespace velextracta
