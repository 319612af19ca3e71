#pragma once

#include <functional>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

// POSIX only: what Process.posix.cpp builds on.

namespace tkcore {

/// All that a program's start needs, made before the fork.
struct ProgramStart final {
    std::string program;                 // absolute path
    std::vector<std::string> arguments;  // argv, the program's name first
    std::string workingDirectory;
    int outputDescriptor = -1;
    int errorDescriptor = -1;   // -1 for either: dropped
    int statusDescriptor = -1;  // takes the error code of a start that failed, as an int
    pid_t parent = 0;
    sigset_t signalMask{};  // the program's own
};

/// Runs as the keeper of one program, in a process just forked for it; never returns.
///
/// The keeper stands between us and the program because descendants that lose their parent fall
/// to it, whatever session they have moved to: so it can tell when none is left. When the program
/// has ended, when it is told to (SIGTERM), or when we die, it ends all of them; it then exits
/// with the program's exit code.
[[noreturn]] void keepProgram(const ProgramStart& start);

/// The direct children of this process, those included that have fallen to it.
std::vector<pid_t> childrenOfThisProcess();

/// Ends every child of this process that the predicate picks, and then their children as these
/// fall to us, until none is left.
void endChildren(const std::function<bool(pid_t)>& picks);

/// The exit code for a status that waitpid() gave.
int exitCodeOf(int waitStatus);

}  // namespace tkcore
