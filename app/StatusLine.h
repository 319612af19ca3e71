#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "app/StatusText.h"
#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/report/Terminal.h"
#include "tkcore/text/AString.h"

namespace velextracta {

/// Shows the state of a run in one line on the terminal, rewritten at most ten times a second. Does
/// nothing without a terminal. The front end owns it.
class StatusLine final : public RunObserver {
public:
    void expected(std::size_t count, bool isAtLeast) override;
    void surveyed(std::size_t nets) override { surveyedNets = nets; }
    void extractionQueued(const tkcore::AString& name) override;
    void extractionStarted(const tkcore::AString& name, const tkcore::AString& path) override;
    void extractionFinished(const tkcore::AString& name) override;
    void waiting() override { show(); }
    [[nodiscard]] std::chrono::milliseconds restTime() const override;

    [[nodiscard]] std::chrono::seconds elapsed() const;
    /// How many nets have connectivity records; none in a run without a survey.
    [[nodiscard]] std::optional<std::size_t> nets() const { return surveyedNets; }
    void merged(std::uint64_t bytes, std::uint64_t all) override;
    void packed(std::uint64_t bytes, std::uint64_t all) override;

private:
    using Clock = std::chrono::steady_clock;

    struct Extraction {
        tkcore::AString name;
        tkcore::LongFileName file;
        Clock::time_point start;
    };

    /// Bytes merged or packed. The rate counts from the last start or resumption of the work.
    struct Work {
        void note(std::uint64_t bytesDone, std::uint64_t bytesOfAll);
        [[nodiscard]] bool isUnderWay() const { return bytes < all; }
        [[nodiscard]] RunStatus::Progress progress(Clock::time_point now) const;

        std::uint64_t bytes = 0;
        std::uint64_t all = 0;
        std::uint64_t startBytes = 0;
        Clock::time_point start;
    };

    void show();
    [[nodiscard]] RunStatus status(Clock::time_point now) const;

    tkcore::TerminalLine line;
    Clock::time_point nextTime =
        line.isPossible() ? Clock::time_point::min() : Clock::time_point::max();
    std::vector<Extraction> running;
    std::vector<tkcore::AString> queued;
    Clock::time_point start = Clock::now();
    std::size_t expectedCount = 0;
    bool isExpectedAtLeast = false;
    std::size_t finished = 0;
    std::uint64_t finishedBytes = 0;
    std::optional<std::size_t> surveyedNets;
    Work merging;
    Work packing;
    bool isPacking = false;
};

}  // namespace velextracta
