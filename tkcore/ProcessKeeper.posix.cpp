#include "tkcore/ProcessKeeper.posix.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <optional>
#include <span>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/FileDescriptor.posix.h"
#include "tkcore/ProcessDescriptor.posix.h"
#include "tkcore/ProcessTable.posix.h"

namespace tkcore {

namespace {

constexpr int kStatusDescriptor = 3;
constexpr int kFirstUnusedDescriptor = 4;
constexpr int kKeeperFailed = 127;
constexpr int kSignalBase = 128;

/// For a program to give its licence back, or to end its job in a cluster.
constexpr std::chrono::seconds kGrace{1};

/// Ties this process to its parent; false if the parent is gone already.
bool dieWith(pid_t parent, int signal) noexcept {
    return prctl(PR_SET_PDEATHSIG, signal) == 0 && getppid() == parent;
}

/// Leaves open what the program may have and the status descriptor, nothing else.
bool arrangeDescriptors(const ProgramStart& start) noexcept {
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null < 0) {
        return false;
    }
    std::array wanted{null, start.outputDescriptor < 0 ? null : start.outputDescriptor,
                      start.errorDescriptor < 0 ? null : start.errorDescriptor,
                      start.statusDescriptor};
    for (int& descriptor : wanted) {
        // Out of the way of the numbers that are about to be taken.
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
    closefrom(kFirstUnusedDescriptor);
    return true;
}

void reportFailure(int descriptor, int error) noexcept {
    // Nothing can be done where even this fails; the reader then sees a program that ended.
    [[maybe_unused]] const ssize_t written = write(descriptor, &error, sizeof error);
}

/// The program finds no handler of ours: what we handle it must not be handed, and what we switched
/// off for ourselves is the system's own choice again.
void resetSignals() noexcept {
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        const bool isOurs = signal == SIGPIPE || signal == SIGXFSZ || signal == SIGCHLD;
        if (isOurs || (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)) {
            std::signal(signal, SIG_DFL);
        }
    }
}

/// Runs in the keeper's memory: changes nothing there that the keeper looks at.
[[noreturn]] void becomeProgram(const ProgramStart& start, pid_t keeper) noexcept {
    if (dieWith(keeper, SIGKILL)) {
        if (chdir(start.workingDirectory.c_str()) != 0) {
            // "No such file" would be taken for a missing program.
            reportFailure(kStatusDescriptor, errno == ENOENT ? ENOTDIR : errno);
        } else {
            pthread_sigmask(SIG_SETMASK, &start.signalMask, nullptr);
            execv(start.program.c_str(), start.pointers.data());
            reportFailure(kStatusDescriptor, errno);
        }
    }
    _exit(kKeeperFailed);
}

/// The program's exit code, or none if we are told to end it while it runs.
std::optional<int> waitForProgram(pid_t program) noexcept {
    sigset_t awaited;
    sigemptyset(&awaited);
    sigaddset(&awaited, SIGCHLD);
    sigaddset(&awaited, SIGTERM);
    for (;;) {
        int status = 0;
        for (pid_t ended = 0; (ended = waitpid(-1, &status, WNOHANG)) > 0;) {
            if (ended == program) {
                return exitCodeOf(status);
            }
        }
        if (sigwaitinfo(&awaited, nullptr) == SIGTERM) {
            return std::nullopt;
        }
    }
}

/// Asks every descendant to end. Only a descriptor makes sure that the one asked is the one found:
/// a number may have come to mean another process.
void askDescendantsToEnd() {
    for (const auto& [process, parent] : descendantsOfThisProcess()) {
        const FileDescriptor descriptor(pidfd_open(process, 0));
        if (const pid_t now = parentOf(process); now == parent || now == getpid()) {
            pidfd_send_signal(descriptor.get(), SIGTERM, nullptr, 0);
            pidfd_send_signal(descriptor.get(), SIGCONT, nullptr, 0);  // it may be suspended
        }
    }
}

/// Reaps until no child is left, or the time is over.
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

/// Kills what is left: each child and, as they fall to us, their children. Gives up on what may not
/// be killed.
void killDescendants() noexcept {
    for (bool found = haveChildren(); found;) {
        found = false;
        std::array<pid_t, 256> children;
        for (const pid_t child : std::span(children).first(childrenOfThisProcess(children))) {
            if (kill(child, SIGKILL) == 0) {  // ours to reap: its number means nobody else
                waitpid(child, nullptr, 0);
                found = true;
            }
        }
    }
}

void endDescendants() noexcept {
    try {
        askDescendantsToEnd();
    } catch (...) {  // no memory for a list of them: they are not asked, then
    }
    waitForChildren(kGrace);
    killDescendants();
}

}  // namespace

int exitCodeOf(int waitStatus) noexcept {
    return WIFSIGNALED(waitStatus) ? kSignalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

void keepProgram(const ProgramStart& start) noexcept {
    // The terminal's interrupt and a batch system's kill go to all of our process group. The keeper
    // must outlive us to end the program's tree, so it leaves the group.
    setsid();
    prctl(PR_SET_NAME, "process-keeper");
    resetSignals();
    if (!dieWith(start.parent, SIGTERM)) {
        _exit(kKeeperFailed);
    }
    if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0 || !arrangeDescriptors(start)) {
        reportFailure(start.statusDescriptor, errno);
        _exit(kKeeperFailed);
    }
    const pid_t keeper = getpid();
    // A second copy of our memory, however short-lived, would take as long again as the first.
    // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.vfork)
    const pid_t program = vfork();
    if (program == 0) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Vfork): system calls only
        becomeProgram(start, keeper);
    }
    if (program < 0) {
        reportFailure(kStatusDescriptor, errno);
        _exit(kKeeperFailed);
    }
    closefrom(STDIN_FILENO);
    const std::optional<int> exitCode = waitForProgram(program);
    if (!exitCode) {
        endDescendants();
    }
    _exit(exitCode.value_or(kSignalBase + SIGTERM));
}

}  // namespace tkcore
