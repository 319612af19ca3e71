#include "app/StatusLine.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "tkcore/PathStatus.h"

namespace velextracta {

using tkcore::AString;

namespace {

constexpr std::chrono::milliseconds kBetweenTwo{100};
constexpr std::chrono::seconds kTimeToRead{10};
/// Before that a rate says nothing.
constexpr std::chrono::duration<double> kShortestTime{0.5};

/// The name of an extraction as its line shows it: the pieces of the connectivity that have a name,
/// not a number, are known by that.
std::string shownName(const AString& name) {
    constexpr std::string_view kConnectivity = "conn";
    std::string text = VEL_ANSI(name);
    const bool isNamed = text.starts_with(kConnectivity) && text.size() > kConnectivity.size() &&
                         text[kConnectivity.size()] >= 'a' && text[kConnectivity.size()] <= 'z';
    return isNamed ? text.substr(kConnectivity.size()) : text;
}

}  // namespace

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

void StatusLine::warned(const AString& text) {
    ++warnings;
    lastWarning = text;
    lastWarningTime = Clock::now();
    show();
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
    // A piece that has grown since its end was noted is taken back to the size noted.
    const auto workedBytes = static_cast<double>(bytes - std::min(startBytes, bytes));
    return {bytes, all, time < kShortestTime ? 0 : workedBytes / time.count()};
}

void StatusLine::show() {
    const Clock::time_point now = Clock::now();
    if (now < nextTime) {
        return;
    }
    line.show(statusText(status(now), line.columns()));
    nextTime = now + kBetweenTwo;
}

std::chrono::milliseconds StatusLine::restTime() const {
    return line.isPossible() ? std::max(std::chrono::ceil<std::chrono::milliseconds>(
                                            nextTime - Clock::now()),
                                        std::chrono::milliseconds(1))
                             : RunObserver::restTime();
}

RunStatus StatusLine::status(Clock::time_point now) const {
    RunStatus status;
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
    status.warnings = warnings;
    status.lastWarning = lastWarning.wide();
    status.isWarningNew = now - lastWarningTime < kTimeToRead;
    return status;
}

}  // namespace velextracta
