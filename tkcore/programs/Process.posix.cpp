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

/// The records behind all handles. A list: handles stay good while it grows, and it takes no memory
/// before main() can say that there is none.
std::list<StartedProcess> startedProcesses;

/// A process that is not ours to end, with the session that what it starts is likely to be in.
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

/// Without it our own keepers and what falls to us cannot be told apart, so nothing is let fall to
/// us; the keepers know what is theirs all the same.
bool hasProcessTable() {
    static const bool isOurs = [] {
        const bool found = isProcessTableOurs();
        if (!found) {
            VelDebug(0,
                     "warning: /proc does not show this process: of an extraction that has to be "
                     "ended only its own process group is asked to, and what it has started "
                     "survives if somebody kills its keeper");
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

/// Notes the children that the predicate picks as not ours to end, and all that descends from them:
/// a descendant becomes a child of ours once its parent has ended. False if there are none.
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

/// Whether a keeper has been killed whose end is still to be noted.
bool anyKeeperWasKilled() {
    return std::ranges::any_of(startedProcesses, [](const StartedProcess& process) {
        siginfo_t info{};
        return !process.exitCode &&
               waitid(P_PID, static_cast<id_t>(process.keeper), &info,
                      WEXITED | WNOHANG | WNOWAIT) == 0 &&
               info.si_pid != 0 && info.si_code != CLD_EXITED;
    });
}

/// What a program has left behind falls to us when its keeper ends, as do the orphans of a keeper
/// that is killed at the same moment; of the two, only the program's own session tells.
void spareLeftBehind(const StartedProcess& ended) {
    const bool areMixed = anyKeeperWasKilled();
    const auto isLeftBehind = [&](pid_t child) {
        return !areMixed || getsid(child) == ended.keeper;
    };
    // Some may become children of ours while we look. Those of one that starts others for ever do
    // not end.
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
    // Our caller may have switched it off, and then nobody could ask how a child has ended.
    std::signal(SIGCHLD, SIG_DFL);
    if (hasProcessTable()) {
        spareChildren([](pid_t) { return true; });  // they were there before us
        // Should somebody kill a keeper, what it kept falls to us.
        prctl(PR_SET_CHILD_SUBREAPER, 1);
    }
}

/// Ends what a keeper kept that was killed itself, and then the children of these as they fall to
/// us, until none is left.
void endOrphansOfKeepers() {
    for (bool found = true; found;) {
        Children room;
        const auto children = std::span(room).first(childrenOfThisProcess(room));
        // Not that of ranges, whose result clang 14 cannot compile.
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
    } catch (const std::bad_alloc&) {  // nothing can be noted, and the run is about to fail
    }
}

/// Forks the keeper with every signal blocked, so that none finds it half made.
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

/// Until the program has taken over, which closes the pipe's other end, or its start has failed.
/// The start of a program on a disk that does not answer lasts until it does.
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
    // "No such file" would be taken for a missing program.
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

/// For what has been told to end; false if it has not ended within the time.
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
        kill(process.keeper, SIGCONT);  // what it is about to end may suspend it
        sleepMilliseconds(1);
    }
}

}  // namespace

void lendCommandLine(char** argv) noexcept {
    // The environment follows the arguments, each text right behind the one before.
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
        // What hangs is its keeper's to end.
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
    // What it takes at most to be asked, to be killed and to be reaped. What cannot be ended, as a
    // program that waits for a disk, is its keeper's from then on.
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
