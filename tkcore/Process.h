#pragma once

#include "tkcore/AString.h"
#include "tkcore/Pipe.h"

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
/// argument wrapped in double quotes reaches the program without them; nothing else is changed.
/// The program's input is empty, its two outputs go to the output end where captureOutput and
/// captureErrors say so and are dropped otherwise; no other descriptor reaches it. If we die while
/// it runs, it is ended with everything that it has started. Security attributes, creation flags,
/// window and priority are there for callers that know them.
int VeltCreateProcess(const AString& applicationName, const AString* argv, int argc,
                      ProcessHandle& process, const AString& workingDirectory,
                      const void* processSecurity, const void* threadSecurity, PipeHandle output,
                      unsigned creationFlags, bool showWindow, bool captureOutput,
                      bool captureErrors, int priority);

/// Sets exitCode to kStillRunning, or once the program has ended to its exit code, 128 + n if
/// signal n ended it. Zero on failure. What a program that came to its own end has left behind
/// runs on: others may share it.
int VeltGetProcessExitCode(ProcessHandle process, int& exitCode);

/// Whether the last look at its exit code found that it has ended. Where exit codes are large, a
/// program may end with the very code that means that it runs.
bool hasProcessEnded(ProcessHandle process) noexcept;

/// Asks the program and all its descendants to end, those too that changed their process group or
/// session or have lost their parent; what is left of them after a second is ended for good, at
/// the latest by VeltTerminateProcessTree or our own end. Does not wait, so that several trees end
/// at the same time. Does nothing to a program that has ended.
void requestProcessTreeEnd(ProcessHandle process) noexcept;

/// The same, and returns when none is left.
void VeltTerminateProcessTree(ProcessHandle process) noexcept;

}  // namespace tkcore
