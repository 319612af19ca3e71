#pragma once

#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

// What Process.posix.cpp builds on.

namespace tkcore {

/// All that a program's start needs, made before the fork.
struct ProgramStart final {
    std::string program;                 // absolute path
    std::vector<std::string> arguments;  // argv, the program's name first
    std::vector<char*> pointers;         // to the arguments, as the system wants them
    std::string workingDirectory;
    int outputDescriptor = -1;
    int errorDescriptor = -1;   // -1 for either: dropped
    int statusDescriptor = -1;  // takes the error code of a start that failed, as an int
    pid_t parent = 0;
    sigset_t signalMask{};  // the program's own
};

/// Runs as the keeper of one program, in a process just forked for it; never returns, in no way:
/// an exception would unwind the frames of the process it was forked from.
///
/// The keeper stands between us and the program because descendants that lose their parent fall
/// to it, whatever session they have moved to: so it can reach all of them and tell when none is
/// left. When it is told to (SIGTERM), or when we die, it asks them to end and ends what is left
/// after a second. When the program has come to its own end, it exits with the program's exit code
/// and leaves alone what the program has left behind.
[[noreturn]] void keepProgram(const ProgramStart& start) noexcept;

/// The exit code for a status that waitpid() gave.
int exitCodeOf(int waitStatus) noexcept;

}  // namespace tkcore
