#pragma once

#include <functional>
#include <stdexcept>

namespace tkcore {

/// From here on a request to end is only noted, and loops check for it. Requests are SIGINT,
/// SIGTERM, SIGHUP and the warnings of batch systems (SIGUSR1, SIGUSR2, SIGXCPU); on Windows
/// Ctrl-C, Ctrl-Break, the closing of the console and the end of the session. Signals that the
/// program's caller ignores stay ignored.
///
/// From here on a write also fails, instead of ending the process, if a pipe is closed or a file
/// would exceed the limit on its size. Access to a drive without a disk fails, too; Windows would
/// ask the user for the disk.
void noteInterruptions();

/// The signal number of the first request to end; 0 if there is none or it came too late.
int interruption() noexcept;

/// Long loops throw this once a request to end has been noted.
class Interrupted final : public std::runtime_error {
public:
    explicit Interrupted(int signal);
};

/// Throws Interrupted once a request to end has been noted. Suspends the process here if the user
/// has asked for that (Ctrl-Z).
void throwIfInterrupted();

/// Sets actions to call before the process is suspended and after it goes on.
void suspendWith(std::function<void()> beforeIt, std::function<void()> afterIt);

/// Throws Interrupted if a request to end has come. When this function has returned, such a request
/// is too late: the run delivers its result and ends with 0.
void passPointOfNoReturn();

/// Whether any request to end has come, even one that was too late. Then do not wait for readers
/// any longer.
bool isEndRequested() noexcept;

/// Ends the process as the noted request would have ended it, because its caller expects that.
/// Returns if there is none.
void endByInterruption();

/// For the part that depends on the system, which may call them at any moment.
void noteRequestToEnd(int signal) noexcept;
void forgetRequestsToEnd() noexcept;

/// The part of throwIfInterrupted() that depends on the system: suspends the process if that has
/// been asked for.
void suspendIfAsked(const std::function<void()>& beforeIt, const std::function<void()>& afterIt);

}  // namespace tkcore
