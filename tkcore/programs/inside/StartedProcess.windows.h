#pragma once

#include <chrono>
#include <optional>

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

/// What stands behind a ProcessHandle.
struct StartedProcess final {
    Handle process;
    /// Holds the program and all that descends from it; ends them all when it is closed.
    Handle job;
    DWORD number = 0;
    std::optional<int> exitCode;  // once its end has been noted
    /// Until when it has time to end, once it has been asked to.
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

}  // namespace tkcore
