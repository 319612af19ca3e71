#include "tkcore/system/Interruption.h"

#include <csignal>

#include <windows.h>

namespace tkcore {

namespace {

constexpr UINT kEndedByInterruption = 0xC000013A;  // exit code of the system's own handler

int signalFor(DWORD event) {
    switch (event) {
        case CTRL_C_EVENT:
            return SIGINT;
        case CTRL_BREAK_EVENT:
            return SIGBREAK;
        default:
            return SIGTERM;
    }
}

/// The system calls this in a new thread.
BOOL WINAPI noteEvent(DWORD event) {
    noteRequestToEnd(signalFor(event));
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The system ends the process when this returns, or after some seconds. In those the run
        // cleans up. The end of the process ends this thread.
        Sleep(INFINITE);
    }
    return TRUE;
}

}  // namespace

void noteInterruptions() {
    forgetRequestsToEnd();
    SetConsoleCtrlHandler(noteEvent, TRUE);
    SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS);
}

void endByInterruption() {
    if (interruption() != 0) {
        ExitProcess(kEndedByInterruption);
    }
}

void suspendIfAsked(const std::function<void()>& /*beforeIt*/,
                    const std::function<void()>& /*afterIt*/) {}  // nobody asks here

}  // namespace tkcore
