#pragma once

#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

// The keeper process, for Process.posix.cpp.

namespace tkcore {

/// Everything that a program's start needs, prepared before the fork.
struct ProgramStart final {
    std::string program;                   // absolute path
    std::vector<std::string> arguments;    // argv, the program's name first
    std::vector<std::string> environment;  // a copy: a keeper's title overwrites the original
    std::vector<char*> argv;               // this and envp: pointers to the two, for the system
    std::vector<char*> envp;
    std::string workingDirectory;
    std::string title;  // the keeper's
    int outputDescriptor = -1;
    int errorDescriptor = -1;   // -1: this output is dropped
    int statusDescriptor = -1;  // for a StartFailure
    pid_t parent = 0;
    bool hasProcessTable = true;
    sigset_t signalMask{};  // the program's own
};

/// A keeper writes this if a start has failed, and nothing otherwise.
struct StartFailure final {
    enum class Step : int { kSetUp, kNullDevice, kFolder, kProgram };

    int error = 0;
    Step step = Step::kSetUp;
};

/// The memory of this process's command line, with room for a keeper's title.
struct TitleRoom final {
    char* begin = nullptr;
    std::size_t size = 0;
};
extern TitleRoom titleRoom;

/// Runs as the keeper of one program, in a process just forked for it. Never returns or throws: an
/// exception would unwind the stack of the process it was forked from.
///
/// The keeper is the program's parent and adopts descendants that lose their parent, whatever their
/// session. So it can reach all of them and knows when none is left. On SIGTERM, or when we die, it
/// asks them to end and kills those left after a second. When the program ends by itself, the
/// keeper exits with the program's exit code and does not touch the processes that the program left
/// running.
[[noreturn]] void keepProgram(const ProgramStart& start) noexcept;

/// The exit code for a status that waitpid() gave.
int exitCodeOf(int waitStatus) noexcept;

}  // namespace tkcore
