#pragma once

#include <chrono>

namespace tkcore {

/// What a program is given that is asked to end: time for a licence to be given back, or for a job
/// in a cluster to be cancelled.
inline constexpr std::chrono::seconds kGrace{1};

}  // namespace tkcore
