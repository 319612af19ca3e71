#pragma once

#include <functional>
#include <thread>

namespace tkcore {

/// Starts a thread that signals do not interrupt: the process's signal handlers run on the caller's
/// thread. Throws std::system_error if the system cannot start a thread.
std::jthread startQuietThread(std::function<void()> work);

}  // namespace tkcore
