#pragma once

#include <chrono>
#include <optional>

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

/// What stands behind a ProcessHandle.
struct StartedProcess final {
    Handle process;
    /// Holds the program and all that descends from it; ends them all when it is closed. None where
    /// the system has refused it.
    Handle job;
    DWORD number = 0;
    std::optional<int> exitCode;  // once its end has been noted
    /// Until when it has time to end, once it has been asked to.
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

/// Sends an event of the console to a group of its programs, as GenerateConsoleCtrlEvent does;
/// tests stand in for the console with one of their own.
using ConsoleEventSender = BOOL(WINAPI*)(DWORD event, DWORD group);
extern ConsoleEventSender sendConsoleEvent;

}  // namespace tkcore
