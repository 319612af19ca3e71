#pragma once

#include <stdexcept>

namespace tkcore {

/// From here on a request to end (SIGINT, SIGTERM, SIGHUP) is only noted, for the loops to ask
/// after; one that the caller of the program had switched off stays off. A write to a closed
/// pipe, or beyond a limit on the size of files, no longer ends the process either: it fails.
void noteInterruptions();

/// The first request to end that has been noted, 0 while there is none.
int interruption() noexcept;

/// What every loop that may take long fails with once a request to end has been noted.
class Interrupted final : public std::runtime_error {
public:
    explicit Interrupted(int signal);
};

/// Throws Interrupted once a request to end has been noted.
void throwIfInterrupted();

/// Ends the process by the noted signal, as its caller expects; returns if there is none.
void endByInterruption();

}  // namespace tkcore
