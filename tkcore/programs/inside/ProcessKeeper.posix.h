#pragma once

#include <array>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

// What Process.posix.cpp builds on.

namespace tkcore {

/// All that a program's start needs, made before the fork.
struct ProgramStart final {
    std::string program;                   // absolute path
    std::vector<std::string> arguments;    // argv, the program's name first
    std::vector<std::string> environment;  // as it is now: a keeper's title takes its place
    std::vector<char*> argv;               // to the two, as the system wants them
    std::vector<char*> envp;
    std::string workingDirectory;
    std::string title;  // of the keeper
    int outputDescriptor = -1;
    int errorDescriptor = -1;   // -1 for either: dropped
    int statusDescriptor = -1;  // takes a StartFailure
    pid_t parent = 0;
    bool hasProcessTable = true;
    sigset_t signalMask{};  // the program's own
};

/// What a keeper says of a start that has failed; of one that has not it says nothing.
struct StartFailure final {
    enum class Step : int { kSetUp, kNullDevice, kFolder, kProgram };

    int error = 0;
    Step step = Step::kSetUp;
};

/// Where the command line of this process stands, with room for the title of a keeper.
struct TitleRoom final {
    char* begin = nullptr;
    std::size_t size = 0;
};
extern TitleRoom titleRoom;

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
