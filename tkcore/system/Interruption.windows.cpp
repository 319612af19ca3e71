#include "tkcore/system/Interruption.h"

#include <csignal>

#include <windows.h>

namespace tkcore {

namespace {

constexpr UINT kEndedByInterruption = 0xC000013A;  // what the system's own handler ends with

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

/// Runs in a thread that the system makes for it.
BOOL WINAPI noteEvent(DWORD event) {
    noteRequestToEnd(signalFor(event));
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The system ends the process when this returns, or after some seconds: those are what the
        // run has to clean up. The end of the process ends this thread.
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
