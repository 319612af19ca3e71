#pragma once

#include <chrono>
#include <optional>

#include "tkcore/system/Handle.windows.h"

namespace tkcore {

/// The record behind a ProcessHandle.
struct StartedProcess final {
    Handle process;
    /// The job of the program and its descendants; closing it ends them all. None if the system has
    /// refused it.
    Handle job;
    DWORD number = 0;
    std::optional<int> exitCode;  // once its end has been noted
    /// When its time to end is over; set once it has been asked to end.
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

/// Sends an event of the console to a process group, as GenerateConsoleCtrlEvent does. Tests
/// replace it.
using ConsoleEventSender = BOOL(WINAPI*)(DWORD event, DWORD group);
extern ConsoleEventSender sendConsoleEvent;

}  // namespace tkcore
