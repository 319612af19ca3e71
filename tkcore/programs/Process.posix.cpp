#include "tkcore/programs/Process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <list>
#include <new>
#include <set>
#include <span>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/programs/inside/PipeEnd.posix.h"
#include "tkcore/programs/inside/ProcessDescriptor.posix.h"
#include "tkcore/programs/inside/ProcessKeeper.posix.h"
#include "tkcore/programs/inside/ProcessTable.posix.h"
#include "tkcore/programs/inside/ProgramEnd.h"
#include "tkcore/programs/inside/ProgramPath.h"
#include "tkcore/programs/inside/StartedProcess.posix.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/System.h"

namespace tkcore {

namespace {

/// The records behind all handles. A list, because handles stay valid while it grows, and because
/// it allocates nothing before main(), which reports a lack of memory.
std::list<StartedProcess> startedProcesses;

/// A process that we must not end, with its session, in which its children are likely to be.
struct ForeignProcess final {
    explicit ForeignProcess(const ProcessEntry& entry)
        : process(entry.process), start(entry.start), session(getsid(entry.process)) {}

    pid_t process;
    std::uint64_t start;
    pid_t session;
};
std::vector<ForeignProcess> foreignProcesses;

bool isForeign(pid_t child) {
    const pid_t session = getsid(child);
    const std::uint64_t start = lookUp(child).start;
    return std::ranges::any_of(foreignProcesses, [=](const ForeignProcess& foreign) {
        return (foreign.process == child && foreign.start == start) || foreign.session == session;
    });
}

/// Whether there is a process table. Without it we cannot tell our keepers from adopted processes,
/// so we adopt none. The keepers find their own descendants nevertheless.
bool hasProcessTable() {
    static const bool isOurs = [] {
        const bool found = isProcessTableOurs();
        if (!found) {
            warn(
                "/proc does not show this process: of an extraction that has to be ended only its "
                "own process group is asked to, and what it has started survives if somebody kills "
                "its keeper");
        }
        return found;
    }();
    return isOurs;
}

bool isKeeper(pid_t child) {
    return std::ranges::any_of(startedProcesses, [=](const StartedProcess& process) {
        return process.keeper == child && !process.exitCode;
    });
}

using Children = std::array<pid_t, 512>;

/// Notes the children that the predicate picks, and their descendants, as processes that we must
/// not end. A descendant becomes our child when its parent ends. False if the predicate picks none.
template <typename Predicate>
bool spareChildren(const Predicate& picks) {
    Children children;
    std::set<pid_t> spared;
    for (const pid_t child : std::span(children).first(childrenOfThisProcess(children))) {
        if (!isKeeper(child) && !isForeign(child) && picks(child)) {
            spared.insert(child);
            foreignProcesses.emplace_back(lookUp(child));
        }
    }
    if (spared.empty()) {
        return false;
    }
    for (const ProcessEntry& entry : descendantsOf(spared)) {
        foreignProcesses.emplace_back(entry);
    }
    return true;
}

/// Whether a keeper was killed and its end is not noted yet.
bool anyKeeperWasKilled() {
    return std::ranges::any_of(startedProcesses, [](const StartedProcess& process) {
        siginfo_t info{};
        return !process.exitCode &&
               waitid(P_PID, static_cast<id_t>(process.keeper), &info,
                      WEXITED | WNOHANG | WNOWAIT) == 0 &&
               info.si_pid != 0 && info.si_code != CLD_EXITED;
    });
}

/// When a keeper ends, we adopt the processes that its program left running. If another keeper is
/// killed at the same time, we adopt that keeper's processes, too; only the session tells them
/// apart.
void spareLeftBehind(const StartedProcess& ended) {
    const bool areMixed = anyKeeperWasKilled();
    const auto isLeftBehind = [&](pid_t child) {
        return !areMixed || getsid(child) == ended.keeper;
    };
    // More processes may become our children while we look. Limit the looks, because a program may
    // start others without end.
    constexpr int kMostLooks = 10;
    for (int look = 0; look < kMostLooks && spareChildren(isLeftBehind); ++look) {
    }
}

void prepareForChildren() {
    static bool prepared = false;
    if (prepared) {
        return;
    }
    prepared = true;
    // If our caller ignored the signal, the system would not keep the exit codes of children.
    std::signal(SIGCHLD, SIG_DFL);
    if (hasProcessTable()) {
        spareChildren([](pid_t) { return true; });  // children from before our start
        // Adopt a keeper's processes if somebody kills the keeper.
        prctl(PR_SET_CHILD_SUBREAPER, 1);
    }
}

/// Ends the processes of a killed keeper, then their children, which we adopt, until none is left.
void endOrphansOfKeepers() {
    for (bool found = true; found;) {
        Children room;
        const auto children = std::span(room).first(childrenOfThisProcess(room));
        // Not std::ranges::partition: clang 14 cannot compile its result.
        const auto others = std::partition(children.begin(), children.end(), [](pid_t child) {
            return !isKeeper(child) && !isForeign(child);
        });
        found = killChildren({children.begin(), others});
    }
}

void noteEnd(StartedProcess& process, int waitStatus) noexcept {
    process.exitCode = exitCodeOf(waitStatus);
    process.keeperDescriptor.close();
    if (!hasProcessTable()) {
        return;
    }
    try {
        if (WIFSIGNALED(waitStatus)) {
            endOrphansOfKeepers();
        } else {
            spareLeftBehind(process);
        }
    } catch (const std::bad_alloc&) {  // no memory for notes; the run is about to fail
    }
}

/// Forks the keeper with all signals blocked, so that none arrives before it is ready.
pid_t startKeeper(ProgramStart& start) {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &start.signalMask);
    start.parent = getpid();
    const pid_t keeper = fork();
    if (keeper == 0) {
        keepProgram(start);
    }
    const int failure = errno;
    pthread_sigmask(SIG_SETMASK, &start.signalMask, nullptr);
    errno = failure;
    return keeper;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

ProgramStart startOf(const ProgramRequest& request) {
    ProgramStart start;
    start.arguments = request.arguments;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        start.environment.emplace_back(*variable);
    }
    start.argv = pointersTo(start.arguments);
    start.envp = pointersTo(start.environment);
    start.workingDirectory = VEL_ANSI(request.workingDirectory);
    start.title = "process-keeper: " + request.title;
    start.hasProcessTable = hasProcessTable();
    return start;
}

/// Waits until the program has started, which closes the pipe's other end, or its start has failed.
/// If a disk does not answer, the start lasts until it does.
StartFailure awaitStart(PipeHandle statusEnd) {
    constexpr int kMillisecondsToWait = 50;
    for (;;) {
        if (isEndRequested()) {
            return {EINTR, StartFailure::Step::kSetUp};
        }
        pollfd status{statusEnd->descriptor.get(), POLLIN, 0};
        if (poll(&status, 1, kMillisecondsToWait) == 0) {
            continue;
        }
        StartFailure failure;
        const ssize_t received = read(statusEnd->descriptor.get(), &failure, sizeof failure);
        if (received >= 0) {
            return received == sizeof failure ? failure : StartFailure();
        }
    }
}

int errorCodeOf(const StartFailure& failure) {
    // Callers would take "No such file" for a missing program.
    switch (failure.step) {
        case StartFailure::Step::kNullDevice:
            VelDebug(0, "error: no program can be started without /dev/null: %s",
                     systemMessage(failure.error));
            return failure.error == ENOENT ? ENODEV : failure.error;
        case StartFailure::Step::kFolder:
            return failure.error == ENOENT ? ENOTDIR : failure.error;
        case StartFailure::Step::kSetUp:
        case StartFailure::Step::kProgram:
        default:
            return failure.error;
    }
}

void signalKeepers(int signal) {
    for (const StartedProcess& process : startedProcesses) {
        if (!process.exitCode) {
            kill(process.keeper, signal);
        }
    }
}

/// Reaps a process that has been told to end; false if it has not ended within the time.
bool reapWithin(StartedProcess& process, std::chrono::milliseconds time) noexcept {
    const auto deadline = std::chrono::steady_clock::now() + time;
    int status = 0;
    for (;;) {
        const pid_t ended = waitpid(process.keeper, &status, WNOHANG);
        if (ended != 0) {
            noteEnd(process, status);
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        kill(process.keeper, SIGCONT);  // a process that it is about to end may suspend it
        sleepMilliseconds(1);
    }
}

}  // namespace

void lendCommandLine(char** argv) noexcept {
    // The environment's texts follow those of the arguments without a gap.
    char* end = argv[0];
    for (char** texts : {argv, environ}) {
        for (; *texts != nullptr && *texts == end; ++texts) {
            end += std::strlen(end) + 1;
        }
    }
    titleRoom = {argv[0], static_cast<std::size_t>(end - argv[0])};
}

int startProgram(const ProgramRequest& request, ProcessHandle& process) {
    ProgramStart start = startOf(request);
    if (const int error = findProgram(request.program, start.program); error != 0) {
        return error;
    }
    for (PipeHandle output : {request.output, request.errors}) {
        if (output != nullptr && !output->descriptor) {
            return EMFILE;
        }
    }
    start.outputDescriptor = request.output == nullptr ? -1 : request.output->descriptor.get();
    start.errorDescriptor = request.errors == nullptr ? -1 : request.errors->descriptor.get();
    CPipe status;
    if (!status.CreatePipe()) {
        return errno;
    }
    start.statusDescriptor = status.writeHandle()->descriptor.get();
    prepareForChildren();
    StartedProcess& started = startedProcesses.emplace_back();
    started.keeper = startKeeper(start);
    if (started.keeper < 0) {
        const int error = errno;
        startedProcesses.pop_back();
        return error;
    }
    status.closeWriteEnd();
    if (const StartFailure failure = awaitStart(status.readHandle()); failure.error != 0) {
        // If the start hangs, its keeper will end it.
        constexpr std::chrono::seconds kLongestEnd{2};
        requestProcessTreeEnd(&started);
        if (reapWithin(started, kLongestEnd)) {
            startedProcesses.pop_back();
        }
        return errorCodeOf(failure);
    }
    process = &started;
    process->keeperDescriptor = FileDescriptor(pidfd_open(process->keeper, 0));
    return 0;
}

void suspendPrograms() {
    signalKeepers(SIGTSTP);
}

void resumePrograms() {
    signalKeepers(SIGCONT);
}

bool lookForEnd(StartedProcess& process) noexcept {
    int status = 0;
    const pid_t ended = process.exitCode ? 0 : waitpid(process.keeper, &status, WNOHANG);
    if (ended > 0) {
        noteEnd(process, status);
    }
    return ended >= 0;
}

std::optional<int> notedExitCode(const StartedProcess& process) noexcept {
    return process.exitCode;
}

void requestProcessTreeEnd(ProcessHandle process) noexcept {
    if (process != nullptr && !process->exitCode) {
        kill(process->keeper, SIGTERM);
        kill(process->keeper, SIGCONT);
    }
}

void VeltTerminateProcessTree(ProcessHandle process) noexcept {
    // Enough time to ask, to kill and to reap. If a program cannot be ended, for example because it
    // waits for a disk, its keeper goes on trying.
    constexpr std::chrono::seconds kPatience{10};
    if (process == nullptr || process->exitCode) {
        return;
    }
    requestProcessTreeEnd(process);
    if (!reapWithin(*process, kPatience)) {
        writeLog(0, "error: ", "a program that was to be ended still runs");
    }
}

}  // namespace tkcore
