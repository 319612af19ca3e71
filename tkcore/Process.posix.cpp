#include "tkcore/Process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <deque>
#include <new>
#include <span>
#include <string>
#include <vector>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/PipeEnd.posix.h"
#include "tkcore/ProcessDescriptor.posix.h"
#include "tkcore/ProcessKeeper.posix.h"
#include "tkcore/ProcessTable.posix.h"
#include "tkcore/ProgramArguments.h"
#include "tkcore/ProgramPath.h"
#include "tkcore/StartedProcess.posix.h"

namespace tkcore {

namespace {

/// The records behind all handles. A deque: handles stay good while it grows.
std::deque<StartedProcess> startedProcesses;

/// A child that is not ours to end, with the session that what it starts is likely to be in.
struct ForeignChild final {
    pid_t process = 0;
    pid_t session = 0;
};
std::vector<ForeignChild> foreignChildren;

bool isForeign(pid_t child) {
    const pid_t session = getsid(child);
    return std::ranges::any_of(foreignChildren, [=](const ForeignChild& foreign) {
        return foreign.process == child || foreign.session == session;
    });
}

bool isKeeper(pid_t child) {
    return std::ranges::any_of(startedProcesses, [=](const StartedProcess& process) {
        return process.keeper == child && !process.exitCode;
    });
}

using Children = std::array<pid_t, 512>;

/// Notes the children that the predicate picks as not ours to end.
template <typename Predicate>
void spareChildren(const Predicate& picks) {
    Children children;
    for (const pid_t child : std::span(children).first(childrenOfThisProcess(children))) {
        if (!isKeeper(child) && picks(child)) {
            foreignChildren.push_back({child, getsid(child)});
        }
    }
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
    spareChildren([&](pid_t child) { return !areMixed || getsid(child) == ended.keeper; });
}

void prepareForChildren() {
    static bool prepared = false;
    if (prepared) {
        return;
    }
    prepared = true;
    // Our caller may have switched it off, and then nobody could ask how a child has ended.
    std::signal(SIGCHLD, SIG_DFL);
    spareChildren([](pid_t) { return true; });  // they were there before us
    // Should somebody kill a keeper, what it kept falls to us.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

/// Ends what a keeper kept that was killed itself, and then the children of these as they fall to
/// us, until none is left.
void endOrphansOfKeepers() {
    for (bool found = true; found;) {
        found = false;
        Children children;
        for (const pid_t child : std::span(children).first(childrenOfThisProcess(children))) {
            // A process that only its parent reaps keeps its number until then: the signal reaches
            // the child that was meant.
            if (!isKeeper(child) && !isForeign(child) && kill(child, SIGKILL) == 0) {
                waitpid(child, nullptr, 0);
                found = true;
            }
        }
    }
}

void noteEnd(StartedProcess& process, int waitStatus) noexcept {
    process.exitCode = exitCodeOf(waitStatus);
    process.keeperDescriptor.close();
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

/// The error code that the keeper reports; 0 when the program has taken over, which closes the
/// pipe's other end.
int readStartError(PipeHandle statusEnd) {
    int error = 0;
    ssize_t received = 0;
    do {
        received = read(statusEnd->descriptor.get(), &error, sizeof error);
    } while (received < 0 && errno == EINTR);
    return received == sizeof error ? error : 0;
}

}  // namespace

int VeltCreateProcess(const AString& applicationName, const AString* argv, int argc,
                      ProcessHandle& process, const AString& workingDirectory,
                      const void* /*processSecurity*/, const void* /*threadSecurity*/,
                      PipeHandle output, unsigned /*creationFlags*/, bool /*showWindow*/,
                      bool captureOutput, bool captureErrors, int /*priority*/) {
    ProgramStart start;
    start.arguments = plainArguments(std::span(argv, static_cast<std::size_t>(argc)));
    for (std::string& argument : start.arguments) {
        start.pointers.push_back(argument.data());
    }
    start.pointers.push_back(nullptr);
    const std::string name = applicationName.empty() && !start.arguments.empty()
                                 ? start.arguments.front()
                                 : VEL_ANSI(applicationName);
    if (const int error = findProgram(name, start.program); error != 0) {
        return error;
    }
    const bool wantsPipe = captureOutput || captureErrors;
    if (wantsPipe && !output->descriptor) {
        return EMFILE;
    }
    start.workingDirectory = VEL_ANSI(workingDirectory);
    start.outputDescriptor = captureOutput ? output->descriptor.get() : -1;
    start.errorDescriptor = captureErrors ? output->descriptor.get() : -1;
    CPipe status;
    if (!status.CreatePipe()) {
        return errno;
    }
    start.statusDescriptor = status.writeHandle()->descriptor.get();
    prepareForChildren();
    const pid_t keeper = startKeeper(start);
    if (keeper < 0) {
        return errno;
    }
    status.closeWriteEnd();
    if (const int error = readStartError(status.readHandle()); error != 0) {
        waitpid(keeper, nullptr, 0);
        return error;
    }
    process = &startedProcesses.emplace_back();
    process->keeper = keeper;
    process->keeperDescriptor = FileDescriptor(pidfd_open(keeper, 0));
    return 0;
}

int VeltGetProcessExitCode(ProcessHandle process, int& exitCode) {
    if (!process->exitCode) {
        int status = 0;
        const pid_t ended = waitpid(process->keeper, &status, WNOHANG);
        if (ended < 0) {
            return 0;
        }
        if (ended > 0) {
            noteEnd(*process, status);
        }
    }
    exitCode = process->exitCode.value_or(kStillRunning);
    return 1;
}

bool hasProcessEnded(ProcessHandle process) noexcept {
    return process->exitCode.has_value();
}

void requestProcessTreeEnd(ProcessHandle process) noexcept {
    if (process != nullptr && !process->exitCode) {
        kill(process->keeper, SIGTERM);
        kill(process->keeper, SIGCONT);
    }
}

void VeltTerminateProcessTree(ProcessHandle process) noexcept {
    if (process == nullptr || process->exitCode) {
        return;
    }
    requestProcessTreeEnd(process);
    int status = 0;
    while (waitpid(process->keeper, &status, 0) < 0 && errno == EINTR) {
    }
    noteEnd(*process, status);
}

}  // namespace tkcore
