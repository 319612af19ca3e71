#pragma once

#include <string>
#include <vector>

#include "tkcore/programs/Pipe.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// One started program, with all that descends from it. The record behind a handle belongs to
/// the core library and lasts to the end of the process: a handle may simply be dropped.
using ProcessHandle = struct StartedProcess*;

/// What VeltGetProcessExitCode reports while the program runs.
inline constexpr int kStillRunning = 259;

/// Starts a program in the working directory, without a shell; returns 0, or the system's error
/// code.
///
/// The program is applicationName, or argv[0] where that is empty: a name without a separator is
/// looked up as findProgram says, a relative path is taken from the caller's current directory. An
/// argument wrapped in double quotes is a path: it reaches the program without them, and as
/// pathForPrograms() spells it. Nothing else is changed.
/// The program's input is empty, its two outputs go to the output end where captureOutput and
/// captureErrors say so and are dropped otherwise; no other descriptor reaches it. If we die while
/// it runs, it is ended with everything that it has started. Security attributes, creation flags,
/// window and priority are there for callers that know them.
int VeltCreateProcess(const AString& applicationName, const AString* argv, int argc,
                      ProcessHandle& process, const AString& workingDirectory,
                      const void* processSecurity, const void* threadSecurity, PipeHandle output,
                      unsigned creationFlags, bool showWindow, bool captureOutput,
                      bool captureErrors, int priority);

/// What a program is started with, for those who have more to say than VeltCreateProcess can take.
struct ProgramRequest final {
    /// argv, the program's name first, with the quotes that VeltCreateProcess takes off.
    explicit ProgramRequest(const std::vector<AString>& argv);

    std::string program;
    std::vector<std::string> arguments;
    AString workingDirectory;
    PipeHandle output = nullptr;
    PipeHandle errors = nullptr;  // null for either: dropped
    unsigned creationFlags = 0;
    bool showWindow = false;
    std::string title;  // what the process that looks after it shows beside its name
};

/// Does what VeltCreateProcess does. The start of a program from a disk that does not answer may
/// take for ever: it is given up when a request to end has come (EINTR), and ended when it can be.
int startProgram(const ProgramRequest& request, ProcessHandle& process);

/// Names the place of this process's own command line, as main() was given it: what looks after
/// programs shows there what it does.
void lendCommandLine(char** argv) noexcept;

/// Sets exitCode to kStillRunning, or once the program has ended to its exit code, 128 + n if
/// signal n ended it. Zero on failure. What a program that came to its own end has left behind
/// runs on: others may share it.
int VeltGetProcessExitCode(ProcessHandle process, int& exitCode);

/// Whether the last look at its exit code found that it has ended. Where exit codes are large, a
/// program may end with the very code that means that it runs.
bool hasProcessEnded(ProcessHandle process) noexcept;

/// Suspends all programs that run, with all that descends from them, and lets them go on.
void suspendPrograms();
void resumePrograms();

/// Asks the program and all its descendants to end, those too that changed their process group or
/// session or have lost their parent; what is left of them after a second is ended for good, at
/// the latest by VeltTerminateProcessTree or our own end. Does not wait, so that several trees end
/// at the same time. Does nothing to a program that has ended.
void requestProcessTreeEnd(ProcessHandle process) noexcept;

/// The same, and returns when none is left; what the system cannot end it does not wait for.
void VeltTerminateProcessTree(ProcessHandle process) noexcept;

}  // namespace tkcore
