#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "tkcore/text/AString.h"

namespace velextracta {

/// Is told what happens in a run while it happens. The front end owns it and hands it to the
/// executor. This one ignores everything; the front end's shows it.
class RunObserver {
public:
    RunObserver() = default;
    virtual ~RunObserver() = default;
    RunObserver(const RunObserver&) = delete;
    RunObserver& operator=(const RunObserver&) = delete;

    /// So many extractions there will be, or at least so many while that is not known yet.
    virtual void expected(std::size_t /*count*/, bool /*isAtLeast*/) {}

    /// So many nets have connectivity records.
    virtual void surveyed(std::size_t /*nets*/) {}

    /// An extraction, by the name of its view file without ".txt"; it writes the file at the path.
    virtual void extractionQueued(const tkcore::AString& /*name*/) {}
    virtual void extractionStarted(const tkcore::AString& /*name*/,
                                   const tkcore::AString& /*path*/) {}
    virtual void extractionFinished(const tkcore::AString& /*name*/) {}

    /// Time passes, with nothing else to tell.
    virtual void waiting() {}
    /// How long until it wants to be told so again.
    [[nodiscard]] virtual std::chrono::milliseconds restTime() const {
        return std::chrono::milliseconds::max();
    }

    /// Bytes merged, of all bytes in the connectivity pieces that are finished.
    virtual void merged(std::uint64_t /*bytes*/, std::uint64_t /*all*/) {}
    /// Bytes packed, of all bytes of the files to pack.
    virtual void packed(std::uint64_t /*bytes*/, std::uint64_t /*all*/) {}

    /// Something that casts a doubt on the success of the run.
    virtual void warned(const tkcore::AString& /*text*/) {}
};

/// The observer of those who are given none.
inline RunObserver& nobody() {
    static RunObserver observer;
    return observer;
}

}  // namespace velextracta
