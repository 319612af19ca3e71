#pragma once

#include <chrono>

namespace tkcore {

/// The time for a program to end after a request: enough to return a licence, or to cancel a job in
/// a cluster.
inline constexpr std::chrono::seconds kGrace{1};

}  // namespace tkcore
