#pragma once

#include <functional>
#include <stdexcept>

namespace tkcore {

/// From here on a request to end is only noted, for the loops to ask after; one that the caller of
/// the program had switched off stays off. It is SIGINT, SIGTERM, SIGHUP, or a warning of a batch
/// system (SIGUSR1, SIGUSR2, SIGXCPU) or, where the system has these, an event of the console:
/// Ctrl-C, Ctrl-Break, its closing, the end of the session. A write to a closed pipe, or beyond a
/// limit on the size of files, no longer ends the process either: it fails, as does the access to a
/// drive without a disk, which Windows would ask for.
void noteInterruptions();

/// The first request to end that has been noted, by the number of its signal; 0 while there is
/// none, and for one that came too late.
int interruption() noexcept;

/// Thrown by every loop that may take long once a request to end has been noted.
class Interrupted final : public std::runtime_error {
public:
    explicit Interrupted(int signal);
};

/// Throws Interrupted once a request to end has been noted. Where somebody has asked to suspend the
/// process (Ctrl-Z), it is suspended here.
void throwIfInterrupted();

/// Lets what belongs to the process be suspended and go on together with it.
void suspendWith(std::function<void()> beforeIt, std::function<void()> afterIt);

/// Calls throwIfInterrupted() for the last time. After it returns a request to end comes too late:
/// the run delivers its result and ends with 0.
void passPointOfNoReturn();

/// Whether any request to end has come, even one that came too late: nobody should wait for a
/// reader any longer.
bool isEndRequested() noexcept;

/// Ends the process as the noted request would have ended it, which its caller expects; returns if
/// there is none.
void endByInterruption();

/// For the system's half, which may call them at any moment.
void noteRequestToEnd(int signal) noexcept;
void forgetRequestsToEnd() noexcept;

/// The system's half of throwIfInterrupted(): suspends the process if that has been asked for.
void suspendIfAsked(const std::function<void()>& beforeIt, const std::function<void()>& afterIt);

}  // namespace tkcore
