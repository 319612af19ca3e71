#include "tkcore/Process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <deque>
#include <optional>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/ChildNews.h"
#include "tkcore/ProcessKeeper.h"
#include "tkcore/ProgramPath.h"

namespace tkcore {

struct StartedProcess final {
    pid_t keeper = 0;
    std::optional<int> exitCode;  // once the keeper has been reaped
    int runningAt = -1;           // value of childNews() when the keeper was last asked after
};

namespace {

/// The records behind all handles. A deque: handles stay good while it grows.
std::deque<StartedProcess> startedProcesses;

/// Children that were there before us: not ours to end.
std::vector<pid_t> foreignChildren;

void prepareForChildren() {
    static bool prepared = false;
    if (prepared) {
        return;
    }
    prepared = true;
    childNews();  // begins the count; the end of a child is never ignored from now on
    foreignChildren = childrenOfThisProcess();
    // Should somebody kill a keeper, what it kept falls to us.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

void endOrphansOfKeepers() {
    endChildren([](pid_t child) {
        return std::ranges::find(foreignChildren, child) == foreignChildren.end() &&
               std::ranges::none_of(startedProcesses, [child](const StartedProcess& process) {
                   return process.keeper == child && !process.exitCode;
               });
    });
}

void noteEnd(StartedProcess& process, int waitStatus) {
    process.exitCode = exitCodeOf(waitStatus);
    if (WIFSIGNALED(waitStatus)) {
        endOrphansOfKeepers();
    }
}

std::string withoutQuotes(std::string argument) {
    if (argument.size() >= 2 && argument.front() == '"' && argument.back() == '"') {
        argument = argument.substr(1, argument.size() - 2);
    }
    return argument;
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
    std::transform(argv, argv + argc, std::back_inserter(start.arguments),
                   [](const AString& argument) { return withoutQuotes(VEL_ANSI(argument)); });
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
    return 0;
}

int VeltGetProcessExitCode(ProcessHandle process, int& exitCode) {
    if (const int news = childNews(); !process->exitCode && process->runningAt != news) {
        process->runningAt = news;
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

void VeltTerminateProcessTree(ProcessHandle process) {
    if (process == nullptr || process->exitCode) {
        return;
    }
    kill(process->keeper, SIGTERM);
    kill(process->keeper, SIGCONT);
    int status = 0;
    while (waitpid(process->keeper, &status, 0) < 0 && errno == EINTR) {
    }
    noteEnd(*process, status);
}

}  // namespace tkcore
