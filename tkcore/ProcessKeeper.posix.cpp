#include "tkcore/ProcessKeeper.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tkcore {

namespace {

constexpr int kStatusDescriptor = 3;
constexpr int kFirstUnusedDescriptor = 4;
constexpr int kKeeperFailed = 127;
constexpr int kSignalBase = 128;

/// The parent of a process, 0 if there is no such process.
pid_t parentOf(std::string_view process) {
    std::ifstream file("/proc/" + std::string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    // The name in parentheses may hold anything, blanks and parentheses too.
    const std::size_t nameEnd = line.rfind(')');
    constexpr std::size_t kStateLength = 4;  // ") S "
    pid_t parent = 0;
    if (nameEnd != std::string::npos && nameEnd + kStateLength < line.size()) {
        std::from_chars(line.data() + nameEnd + kStateLength, line.data() + line.size(), parent);
    }
    return parent;
}

bool haveChildren() {
    siginfo_t info;
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

/// Ties this process to its parent; false if the parent is gone already.
bool dieWith(pid_t parent, int signal) {
    return prctl(PR_SET_PDEATHSIG, signal) == 0 && getppid() == parent;
}

void closeFrom(int first) {
    if (close_range(static_cast<unsigned>(first), ~0U, 0) != 0) {
        for (long descriptor = sysconf(_SC_OPEN_MAX); descriptor >= first; --descriptor) {
            close(static_cast<int>(descriptor));
        }
    }
}

/// Leaves open what the program may have and the status descriptor, nothing else.
bool arrangeDescriptors(const ProgramStart& start) {
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
    closeFrom(kFirstUnusedDescriptor);
    return true;
}

void reportFailure(int descriptor, int error) {
    // Nothing can be done where even this fails; the reader then sees a program that ended.
    [[maybe_unused]] const ssize_t written = write(descriptor, &error, sizeof error);
}

std::vector<char*> argumentPointers(const ProgramStart& start) {
    std::vector<char*> pointers;
    for (const std::string& argument : start.arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// Runs in the keeper's memory: changes nothing there that the keeper looks at.
[[noreturn]] void becomeProgram(const ProgramStart& start, char* const* arguments, pid_t keeper) {
    if (dieWith(keeper, SIGKILL)) {
        if (chdir(start.workingDirectory.c_str()) != 0) {
            // "No such file" would be taken for a missing program.
            reportFailure(kStatusDescriptor, errno == ENOENT ? ENOTDIR : errno);
        } else {
            std::signal(SIGPIPE, SIG_DFL);
            std::signal(SIGXFSZ, SIG_DFL);
            pthread_sigmask(SIG_SETMASK, &start.signalMask, nullptr);
            execv(start.program.c_str(), arguments);
            reportFailure(kStatusDescriptor, errno);
        }
    }
    _exit(kKeeperFailed);
}

/// Waits until the program has ended or we are told to end it.
int waitForProgram(pid_t program) {
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
            return kSignalBase + SIGTERM;
        }
    }
}

}  // namespace

std::vector<pid_t> childrenOfThisProcess() {
    std::vector<pid_t> found;
    if (!haveChildren()) {
        return found;
    }
    const pid_t self = getpid();
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        const auto [end, failure] =
            std::from_chars(name.data(), name.data() + name.size(), process);
        if (failure == std::errc() && *end == '\0' && parentOf(name) == self) {
            found.push_back(process);
        }
    }
    return found;
}

int exitCodeOf(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? kSignalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

void endChildren(const std::function<bool(pid_t)>& picks) {
    for (;;) {
        // A process that only its parent reaps keeps its id until then: each signal reaches the
        // child that was meant.
        std::vector<pid_t> ending = childrenOfThisProcess();
        std::erase_if(ending, [&](pid_t child) { return !picks(child) || kill(child, SIGKILL); });
        if (ending.empty()) {
            return;
        }
        for (const pid_t child : ending) {
            waitpid(child, nullptr, 0);
        }
    }
}

void keepProgram(const ProgramStart& start) {
    // A group or session of its own keeps a signal meant for our whole group (the terminal's
    // interrupt, a batch system's kill) from ending the keeper before its work is done.
    setsid();
    prctl(PR_SET_NAME, "process-keeper");
    std::signal(SIGCHLD, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (!dieWith(start.parent, SIGTERM)) {
        _exit(kKeeperFailed);
    }
    if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0 || !arrangeDescriptors(start)) {
        reportFailure(start.statusDescriptor, errno);
        _exit(kKeeperFailed);
    }
    const std::vector<char*> arguments = argumentPointers(start);
    const pid_t keeper = getpid();
    // A second copy of our memory, however short-lived, would take as long again as the first.
    // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.vfork)
    const pid_t program = vfork();
    if (program == 0) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Vfork): system calls only
        becomeProgram(start, arguments.data(), keeper);
    }
    if (program < 0) {
        reportFailure(kStatusDescriptor, errno);
        _exit(kKeeperFailed);
    }
    closeFrom(STDIN_FILENO);
    const int exitCode = waitForProgram(program);
    endChildren([](pid_t) { return true; });
    _exit(exitCode);
}

}  // namespace tkcore
