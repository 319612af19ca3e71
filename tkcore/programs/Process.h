#pragma once

#include <string>
#include <vector>

#include "tkcore/programs/Pipe.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// One started program with all its descendants. The core library owns the record behind a handle
/// until the process ends, so a handle may simply be dropped.
using ProcessHandle = struct StartedProcess*;

/// What VeltGetProcessExitCode reports while the program runs.
inline constexpr int kStillRunning = 259;

/// Starts a program in the working directory, without a shell. Returns 0 or the system's error
/// code.
///
/// The program is applicationName, or argv[0] if that is empty. findProgram() looks up a name
/// without a separator. A relative path starts from the caller's current directory. An argument in
/// double quotes is a path: the program gets it without the quotes, in the form of
/// pathForPrograms(). Nothing else is changed.
///
/// The program's input is empty. captureOutput and captureErrors send its two outputs to the output
/// end; otherwise they are dropped. It gets no other descriptor. If we die while it runs, it is
/// ended with all its descendants. Security attributes, creation flags, window and priority are for
/// callers that use them.
int VeltCreateProcess(const AString& applicationName, const AString* argv, int argc,
                      ProcessHandle& process, const AString& workingDirectory,
                      const void* processSecurity, const void* threadSecurity, PipeHandle output,
                      unsigned creationFlags, bool showWindow, bool captureOutput,
                      bool captureErrors, int priority);

/// The arguments of VeltCreateProcess and more, for startProgram().
struct ProgramRequest final {
    /// argv begins with the program's name and may have quotes, as for VeltCreateProcess.
    explicit ProgramRequest(const std::vector<AString>& argv);

    std::string program;
    std::vector<std::string> arguments;
    AString workingDirectory;
    PipeHandle output = nullptr;
    PipeHandle errors = nullptr;  // a null output is dropped
    unsigned creationFlags = 0;
    bool showWindow = false;
    std::string title;  // shown by the keeper process beside its name
};

/// Does what VeltCreateProcess does. A start from a disk that does not answer may take for ever. A
/// request to end stops the waiting (EINTR); the started process is ended when that is possible.
int startProgram(const ProgramRequest& request, ProcessHandle& process);

/// Tells where this process's own command line is, as main() got it. Keeper processes overwrite
/// their copy with their title.
void lendCommandLine(char** argv) noexcept;

/// Sets exitCode to kStillRunning or to the exit code of an ended program, 128 + n if signal n
/// ended it. Returns zero on failure. If a program has ended by itself, the processes that it left
/// running go on: others may share them.
int VeltGetProcessExitCode(ProcessHandle process, int& exitCode);

/// Whether the program had ended at the last VeltGetProcessExitCode(). Needed on systems with large
/// exit codes, where a program may end with the value of kStillRunning.
bool hasProcessEnded(ProcessHandle process) noexcept;

/// Suspend all running programs with their descendants, and let them go on.
void suspendPrograms();
void resumePrograms();

/// Asks the program and all its descendants to end, even those that changed their process group or
/// session or lost their parent. Those left after a second are killed, at the latest by
/// VeltTerminateProcessTree or at our own end. Does not wait, so that several trees can end at the
/// same time. Does nothing to a program that has ended.
void requestProcessTreeEnd(ProcessHandle process) noexcept;

/// Does the same, and returns when none is left. Does not wait for processes that the system cannot
/// end.
void VeltTerminateProcessTree(ProcessHandle process) noexcept;

}  // namespace tkcore
