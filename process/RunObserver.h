#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "tkcore/text/AString.h"

namespace velextracta {

/// Receives reports of what happens in a run. The front end owns it and passes it to the executor.
/// This class ignores the reports; the front end's shows them.
class RunObserver {
public:
    RunObserver() = default;
    virtual ~RunObserver() = default;
    RunObserver(const RunObserver&) = delete;
    RunObserver& operator=(const RunObserver&) = delete;

    /// The number of extractions of the run, or a lower bound while it is not known yet.
    virtual void expected(std::size_t /*count*/, bool /*isAtLeast*/) {}

    /// The number of nets with connectivity records.
    virtual void surveyed(std::size_t /*nets*/) {}

    /// Extractions are named by their view files without ".txt". The path is that of the view file.
    virtual void extractionQueued(const tkcore::AString& /*name*/) {}
    virtual void extractionStarted(const tkcore::AString& /*name*/,
                                   const tkcore::AString& /*path*/) {}
    virtual void extractionFinished(const tkcore::AString& /*name*/) {}

    /// The run waits; there is nothing else to report.
    virtual void waiting() {}
    /// After what time the next call of waiting() is due.
    [[nodiscard]] virtual std::chrono::milliseconds restTime() const {
        return std::chrono::milliseconds::max();
    }

    /// Bytes merged so far, and all bytes of the finished connectivity pieces.
    virtual void merged(std::uint64_t /*bytes*/, std::uint64_t /*all*/) {}
    /// Bytes packed so far, and all bytes of the files to pack.
    virtual void packed(std::uint64_t /*bytes*/, std::uint64_t /*all*/) {}
};

/// The observer of a run without one.
inline RunObserver& nobody() {
    static RunObserver observer;
    return observer;
}

}  // namespace velextracta
