#pragma once

#include <functional>
#include <thread>

namespace tkcore {

/// Starts a thread that no signal of the process interrupts: its handlers run on the caller's
/// thread, as if there was no other. A std::system_error if the system has none to give.
std::jthread startQuietThread(std::function<void()> work);

}  // namespace tkcore
