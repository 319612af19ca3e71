#include "tkcore/programs/Process.h"

#include <array>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/Path.h"
#include "tkcore/programs/inside/CommandLine.windows.h"
#include "tkcore/programs/inside/Grace.h"
#include "tkcore/programs/inside/PipeEnd.windows.h"
#include "tkcore/programs/inside/ProgramEnd.h"
#include "tkcore/programs/inside/ProgramPath.h"
#include "tkcore/programs/inside/ProgramStart.windows.h"
#include "tkcore/programs/inside/StartedProcess.windows.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/System.h"

namespace tkcore {

namespace {

/// The time to wait for killed processes. It is limited because the system may be unable to end
/// one, for example if a driver blocks it.
constexpr std::chrono::seconds kPatience{5};

/// The exit code of a program that we have killed, as after SIGTERM on other systems.
constexpr UINT kEndedByUs = 143;

/// The exit code of a program that Ctrl-C, Ctrl-Break or the closing of its console has ended.
constexpr DWORD kEndedByConsole = 0xC000013A;

/// The records behind all handles. A list, because handles stay valid while it grows, and because
/// it allocates nothing before main(), which reports a lack of memory.
std::list<StartedProcess> startedProcesses;

/// A copy of the handle that the child inherits.
Handle forChild(HANDLE handle) {
    HANDLE copy = nullptr;
    DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, TRUE,
                    DUPLICATE_SAME_ACCESS);
    return Handle(copy);
}

Handle nullDeviceForChild() {
    const Handle device(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                    nullptr));
    return forChild(device.get());
}

/// The child's handle of an output; that of the null device if there is no output.
Handle handleForChild(PipeHandle output, const Handle& nothing) {
    return forChild(output == nullptr ? nothing.get() : output->handle.get());
}

bool anyLeft(const StartedProcess& process) noexcept {
    // Without a handle the system would ask about our own job.
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION account{};
    const bool isKnown = process.job && QueryInformationJobObject(
                                            process.job.get(), JobObjectBasicAccountingInformation,
                                            &account, sizeof account, nullptr) != 0;
    return isKnown ? account.ActiveProcesses > 0
                   : WaitForSingleObject(process.process.get(), 0) == WAIT_TIMEOUT;
}

/// A program cannot start in a folder whose path is too long; it may have a short name.
std::wstring folderToStartIn(const AString& wanted) {
    constexpr std::size_t kLongest = MAX_PATH - 2;
    std::wstring full = fullPath(wanted.wide());
    if (full.size() <= kLongest) {
        return full;
    }
    std::wstring shortName(full.size() + MAX_PATH, L'\0');
    shortName.resize(GetShortPathNameW(withoutLimit(full).c_str(), shortName.data(),
                                       static_cast<DWORD>(shortName.size())));
    shortName = withLimit(shortName);
    if (!shortName.empty() && shortName.size() <= kLongest) {
        return shortName;
    }
    std::array<wchar_t, MAX_PATH + 1> temporary{};
    GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
    warn(AString::Format("the path of %s is too long for a program to start there: it starts in %s",
                         wanted, temporary.data()));
    return temporary.data();
}

DWORD exitCodeOf(const StartedProcess& process) noexcept {
    DWORD code = 0;
    GetExitCodeProcess(process.process.get(), &code);
    return code;
}

void noteEnd(StartedProcess& process) noexcept {
    process.exitCode = static_cast<int>(exitCodeOf(process));
    process.process.close();
    process.job.close();
}

/// Whether the program has ended without our request. If so, notes it. The processes that it left
/// running go on, unless the console has ended it.
bool noteOwnEnd(StartedProcess& process) noexcept {
    if (process.deadline || WaitForSingleObject(process.process.get(), 0) != WAIT_OBJECT_0) {
        return false;
    }
    // A Ctrl-Break reaches every program of the console. So this program may end by it before we
    // know of it, and then it has not ended by itself.
    if (process.job && exitCodeOf(process) != kEndedByConsole) {
        endWithJob(process.job, false);
    }
    noteEnd(process);
    return true;
}

}  // namespace

ConsoleEventSender sendConsoleEvent = &GenerateConsoleCtrlEvent;

void lendCommandLine(char** /*argv*/) noexcept {}  // there are no keeper processes

int startProgram(const ProgramRequest& request, ProcessHandle& process) {
    ProgramStart start;
    if (const int error = findProgram(request.program, start.program); error != 0) {
        return error;
    }
    const Handle null = nullDeviceForChild();
    const Handle output = handleForChild(request.output, null);
    const Handle errors = handleForChild(request.errors, null);
    if (!null || !output || !errors) {
        return ERROR_TOO_MANY_OPEN_FILES;
    }
    std::vector<std::string> arguments = request.arguments;
    if (isBatchFile(start.program) && !arguments.empty()) {
        // The interpreter looks up the first word, and takes a slash in it for an option.
        arguments.front() = narrow(fullPath(widen(start.program)));
        if (const std::string text = argumentForAnInterpreter(arguments); !text.empty()) {
            VelDebug(0,
                     "error: a batch file would be given something else for a path with a percent "
                     "sign: %s",
                     text);
            return ERROR_INVALID_NAME;
        }
    }
    start.commandLine = commandLineOf(arguments);
    start.folder = folderToStartIn(request.workingDirectory);
    start.flags = request.creationFlags;
    start.window = request.showWindow ? SW_SHOWNORMAL : SW_HIDE;
    start.input = null.get();
    start.output = output.get();
    start.errors = errors.get();

    StartedProcess started;
    if (const int error = startInJob(start, started); error != 0) {
        return error;
    }
    process = &startedProcesses.emplace_back(std::move(started));
    return 0;
}

void suspendPrograms() {}  // this process is never suspended itself

void resumePrograms() {}

bool lookForEnd(StartedProcess& process) noexcept {
    if (!process.exitCode) {
        noteOwnEnd(process);
    }
    return true;
}

std::optional<int> notedExitCode(const StartedProcess& process) noexcept {
    return process.exitCode;
}

void requestProcessTreeEnd(ProcessHandle process) noexcept {
    if (process == nullptr || process->exitCode || process->deadline || noteOwnEnd(*process)) {
        return;
    }
    // Programs without our console cannot be asked.
    const bool isAsked = sendConsoleEvent(CTRL_BREAK_EVENT, process->number) != 0;
    process->deadline = std::chrono::steady_clock::now();
    if (isAsked) {
        *process->deadline += kGrace;
    }
}

void VeltTerminateProcessTree(ProcessHandle process) noexcept {
    requestProcessTreeEnd(process);
    if (process == nullptr || process->exitCode) {
        return;
    }
    while (anyLeft(*process) && std::chrono::steady_clock::now() < *process->deadline) {
        sleepMilliseconds(1);
    }
    TerminateJobObject(process->job.get(), kEndedByUs);
    TerminateProcess(process->process.get(), kEndedByUs);  // if it is in no job
    const auto latest = std::chrono::steady_clock::now() + kPatience;
    while (anyLeft(*process) && std::chrono::steady_clock::now() < latest) {
        sleepMilliseconds(1);
    }
    noteEnd(*process);
}

}  // namespace tkcore
