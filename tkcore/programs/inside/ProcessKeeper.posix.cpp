#include "tkcore/programs/inside/ProcessKeeper.posix.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <span>

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/programs/inside/Grace.h"
#include "tkcore/programs/inside/ProcessDescriptor.posix.h"
#include "tkcore/programs/inside/ProcessTable.posix.h"
#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

TitleRoom titleRoom;

namespace {

constexpr int kStatusDescriptor = 3;
constexpr int kFirstUnusedDescriptor = 4;
constexpr int kKeeperFailed = 127;
constexpr int kSignalBase = 128;

/// Makes the system send this process the signal when its parent dies; false if the parent is dead.
bool dieWith(pid_t parent, int signal) noexcept {
    return prctl(PR_SET_PDEATHSIG, signal) == 0 && getppid() == parent;
}

void closeFrom(int lowest) noexcept {
    if (syscall(SYS_close_range, lowest, ~0U, 0U) == 0) {
        return;
    }
    // The limit may be a million.
    if (DIR* const listing = opendir("/proc/self/fd"); listing != nullptr) {
        while (const dirent64* const entry = readdir64(listing)) {
            const long descriptor = std::strtol(entry->d_name, nullptr, 10);
            if (descriptor >= lowest && entry->d_name[0] != '.' && descriptor != dirfd(listing)) {
                close(static_cast<int>(descriptor));
            }
        }
        closedir(listing);
        return;
    }
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    for (int descriptor = lowest; static_cast<rlim_t>(descriptor) < limit.rlim_cur; ++descriptor) {
        close(descriptor);
    }
}

/// Leaves open only the program's descriptors and the status descriptor.
bool arrangeDescriptors(const ProgramStart& start, int null) noexcept {
    std::array wanted{null, start.outputDescriptor < 0 ? null : start.outputDescriptor,
                      start.errorDescriptor < 0 ? null : start.errorDescriptor,
                      start.statusDescriptor};
    for (int& descriptor : wanted) {
        // Move it to a number that is not about to be overwritten.
        descriptor = fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstUnusedDescriptor);
        if (descriptor < 0) {
            return false;
        }
    }
    for (int number = STDIN_FILENO; number <= kStatusDescriptor; ++number) {
        const int flags = number == kStatusDescriptor ? O_CLOEXEC : 0;
        if (dup3(wanted[static_cast<std::size_t>(number)], number, flags) < 0) {
            return false;
        }
    }
    closeFrom(kFirstUnusedDescriptor);
    return true;
}

void reportFailure(int descriptor, StartFailure::Step step) noexcept {
    const StartFailure failure{errno, step};
    // A failure cannot be reported; the reader then sees a program that has ended.
    [[maybe_unused]] const ssize_t written = write(descriptor, &failure, sizeof failure);
}

[[noreturn]] void giveUp(int descriptor, StartFailure::Step step) noexcept {
    reportFailure(descriptor, step);
    _exit(kKeeperFailed);
}

/// Replaces the inherited command line, so that users who end our programs by name do not match
/// their keepers.
void showTitle(const std::string& title) noexcept {
    prctl(PR_SET_NAME, "process-keeper");
    if (titleRoom.size > 0) {
        std::memset(titleRoom.begin, 0, titleRoom.size);
        std::memcpy(titleRoom.begin, title.data(), std::min(title.size(), titleRoom.size - 1));
    }
}

/// Resets signals for the program: those that we handle, and those that we have switched off for
/// ourselves. Signals that our caller ignores stay ignored.
void resetSignals() noexcept {
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        const bool isOurs = signal == SIGPIPE || signal == SIGXFSZ || signal == SIGCHLD;
        if (isOurs || (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)) {
            std::signal(signal, SIG_DFL);
        }
    }
}

/// Runs in the keeper's memory, so it must change nothing that the keeper uses.
[[noreturn]] void becomeProgram(const ProgramStart& start, pid_t keeper) noexcept {
    setpgid(0, 0);  // signals to its own group must not reach the keeper
    if (!dieWith(keeper, SIGKILL)) {
        _exit(kKeeperFailed);
    }
    if (chdir(start.workingDirectory.c_str()) != 0) {
        giveUp(kStatusDescriptor, StartFailure::Step::kFolder);
    }
    pthread_sigmask(SIG_SETMASK, &start.signalMask, nullptr);
    execve(start.program.c_str(), start.argv.data(), start.envp.data());
    giveUp(kStatusDescriptor, StartFailure::Step::kProgram);
}

/// By now the number may be that of another process. Our own child keeps its number until we reap
/// it, and a descriptor keeps its process. For others, on a system without descriptors, the start
/// time makes a mistake very unlikely.
void sendSignal(const ProcessEntry& entry, int signal) noexcept {
    const FileDescriptor descriptor(pidfd_open(entry.process, 0));
    if (lookUp(entry.process).start != entry.start) {
        return;
    }
    if (!descriptor || pidfd_send_signal(descriptor.get(), signal, nullptr, 0) != 0) {
        kill(entry.process, signal);
    }
}

/// Signals all our descendants or, without a process table, the program's own group.
void signalDescendants(pid_t program, bool hasProcessTable, int signal) noexcept {
    try {
        if (!hasProcessTable) {
            kill(-program, signal);
            return;
        }
        for (const ProcessEntry& entry : descendantsOf({getpid()})) {
            sendSignal(entry, signal);
        }
    } catch (...) {  // without memory for the list they do not get the signal
    }
}

/// Waits for the program; returns its exit code, or none if we are told to end it.
std::optional<int> waitForProgram(pid_t program, bool hasProcessTable) noexcept {
    sigset_t awaited;
    sigemptyset(&awaited);
    for (const int signal : {SIGCHLD, SIGTERM, SIGTSTP, SIGCONT}) {
        sigaddset(&awaited, signal);
    }
    for (;;) {
        int status = 0;
        for (pid_t ended = 0; (ended = waitpid(-1, &status, WNOHANG)) > 0;) {
            if (ended == program) {
                return exitCodeOf(status);
            }
        }
        switch (sigwaitinfo(&awaited, nullptr)) {
            case SIGTERM:
                return std::nullopt;
            case SIGTSTP:
                // SIGTSTP would not suspend them, because they have no terminal.
                signalDescendants(program, hasProcessTable, SIGSTOP);
                break;
            case SIGCONT:
                signalDescendants(program, hasProcessTable, SIGCONT);
                break;
            default:
                break;
        }
    }
}

/// Reaps children until none is left or the time is over.
void waitForChildren(std::chrono::milliseconds grace) noexcept {
    const auto deadline = std::chrono::steady_clock::now() + grace;
    sigset_t childEnds;
    sigemptyset(&childEnds);
    sigaddset(&childEnds, SIGCHLD);
    for (;;) {
        pid_t ended = 0;
        while ((ended = waitpid(-1, nullptr, WNOHANG)) > 0) {
        }
        const std::chrono::nanoseconds left = deadline - std::chrono::steady_clock::now();
        if (ended < 0 || left.count() <= 0) {
            return;
        }
        const timespec pause{0, std::min<long>(left.count(), 999'999'999)};
        sigtimedwait(&childEnds, nullptr, &pause);
    }
}

/// Kills all children and then their children, which we adopt. Gives up on those that may not be
/// killed.
void killDescendants(bool hasProcessTable) noexcept {
    for (bool found = haveChildren(); found;) {
        std::array<pid_t, 256> room;
        const std::size_t count =
            hasProcessTable ? childrenOfThisProcess(room) : childrenByTrial(room);
        found = killChildren(std::span(room).first(count)) && haveChildren();
    }
}

void endDescendants(pid_t program, bool hasProcessTable) noexcept {
    signalDescendants(program, hasProcessTable, SIGTERM);
    signalDescendants(program, hasProcessTable, SIGCONT);  // some may be suspended
    waitForChildren(kGrace);
    killDescendants(hasProcessTable);
}

}  // namespace

int exitCodeOf(int waitStatus) noexcept {
    return WIFSIGNALED(waitStatus) ? kSignalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

void keepProgram(const ProgramStart& start) noexcept {
    // The terminal's interrupt and a batch system's kill go to our whole process group. The keeper
    // must outlive us to end the program's tree, so it leaves the group.
    setsid();
    showTitle(start.title);
    resetSignals();
    if (!dieWith(start.parent, SIGTERM)) {
        _exit(kKeeperFailed);
    }
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null < 0) {
        giveUp(start.statusDescriptor, StartFailure::Step::kNullDevice);
    }
    if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0 || !arrangeDescriptors(start, null)) {
        giveUp(start.statusDescriptor, StartFailure::Step::kSetUp);
    }
    const pid_t keeper = getpid();
    // vfork, because a second copy of our memory would take as long as the first.
    // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.vfork)
    const pid_t program = vfork();
    if (program == 0) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Vfork): system calls only
        becomeProgram(start, keeper);
    }
    if (program < 0) {
        giveUp(kStatusDescriptor, StartFailure::Step::kSetUp);
    }
    closeFrom(STDIN_FILENO);
    const std::optional<int> exitCode = waitForProgram(program, start.hasProcessTable);
    if (!exitCode) {
        endDescendants(program, start.hasProcessTable);
    }
    _exit(exitCode.value_or(kSignalBase + SIGTERM));
}

}  // namespace tkcore
