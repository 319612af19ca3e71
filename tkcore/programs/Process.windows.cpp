#include "tkcore/programs/Process.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <windows.h>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/files/Path.h"
#include "tkcore/programs/inside/PipeEnd.windows.h"
#include "tkcore/programs/inside/ProgramPath.h"
#include "tkcore/programs/inside/StartedProcess.windows.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/System.h"

namespace tkcore {

namespace {

/// For a program to give its licence back, or to end its job in a cluster.
constexpr std::chrono::seconds kGrace{1};

/// For the system to end what is told to end. What it cannot end, as a program that a driver holds,
/// must not keep us for ever.
constexpr std::chrono::seconds kPatience{5};

/// The exit code of a program that we have ended; that of a terminated one elsewhere.
constexpr UINT kEndedByUs = 143;

/// What a program ends with by Ctrl-C, Ctrl-Break and the closing of its console.
constexpr DWORD kEndedByConsole = 0xC000013A;

/// The records behind all handles. A list: handles stay good while it grows, and it takes no memory
/// before main() can say that there is none.
std::list<StartedProcess> startedProcesses;

/// A copy that the child will have.
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

/// Of an output, or of nothing in place of none.
Handle handleForChild(PipeHandle output, const Handle& nothing) {
    return forChild(output == nullptr ? nothing.get() : output->handle.get());
}

/// Sets whether the job's processes end when nobody holds it any longer.
bool endWithJob(const Handle& job, bool wanted) noexcept {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = wanted ? JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE : 0;
    return SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                   sizeof limits) != 0;
}

bool anyLeft(const Handle& job) noexcept {
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION account{};
    return QueryInformationJobObject(job.get(), JobObjectBasicAccountingInformation, &account,
                                     sizeof account, nullptr) != 0 &&
           account.ActiveProcesses > 0;
}

/// The argument as the C runtime of the child takes it apart again.
std::wstring quoted(std::wstring_view argument) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : argument) {
        // Backslashes mean themselves, but for those before a quote.
        const bool isQuote = character == L'"';
        text.append(isQuote ? backslashes + 1 : 0, L'\\');
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        text += character;
    }
    return text.append(backslashes, L'\\') + L"\"";
}

std::wstring commandLineOf(const std::vector<std::string>& arguments) {
    constexpr std::wstring_view kPlain =
        L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./\\:";
    std::wstring line;
    for (const std::string& argument : arguments) {
        const std::wstring wide = widen(argument);
        const bool isPlain = !wide.empty() && wide.find_first_not_of(kPlain) == std::wstring::npos;
        line.append(line.empty() ? L"" : L" ").append(isPlain ? wide : quoted(wide));
    }
    return line;
}

/// Whether the system starts its command interpreter for the file, which then looks for what stands
/// first in the command line, and takes a slash there for an option.
bool isBatchFile(const std::string& program) {
    const AString type(toPath(program).extension().native());
    return type.MatchNoCase(".bat") || type.MatchNoCase(".cmd");
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
    VelDebug(0, "warning: the path of %s is too long for a program to start there: it starts in %s",
             wanted, temporary.data());
    return temporary.data();
}

/// What a start has to say beside the command line: the handles that the child may have, and the
/// job that it is born in.
class StartAttributes final {
public:
    StartAttributes(std::span<HANDLE> handles, HANDLE* job) {
        constexpr DWORD kCount = 2;
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, kCount, 0, &size);
        room.resize(size);
        isGood = InitializeProcThreadAttributeList(list(), kCount, 0, &size) != 0 &&
                 add(PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles.data(), handles.size_bytes()) &&
                 add(PROC_THREAD_ATTRIBUTE_JOB_LIST, job, sizeof *job);
    }
    ~StartAttributes() {
        if (!room.empty()) {
            DeleteProcThreadAttributeList(list());
        }
    }
    StartAttributes(const StartAttributes&) = delete;
    StartAttributes& operator=(const StartAttributes&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST list() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room.data());
    }
    explicit operator bool() const noexcept { return isGood; }

private:
    bool add(DWORD_PTR attribute, void* value, SIZE_T size) {
        return UpdateProcThreadAttribute(list(), 0, attribute, value, size, nullptr, nullptr) != 0;
    }

    std::vector<std::byte> room;
    bool isGood = false;
};

/// A group of its own keeps the console's Ctrl-C, which is meant for us, from the child, and lets
/// us send it a Ctrl-Break. Without a console of ours the child must not open one of its own.
DWORD creationFlagsHere() {
    const bool haveConsole = GetConsoleCP() != 0;
    return EXTENDED_STARTUPINFO_PRESENT | CREATE_NEW_PROCESS_GROUP |
           (haveConsole ? 0 : CREATE_NO_WINDOW);
}

/// A child that crashes, or finds no disk in a drive, must not wait for somebody to click.
void silenceDialogs() {
    SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
}

/// All that a program's start needs.
struct ProgramStart final {
    std::string program;  // absolute path
    std::wstring commandLine;
    std::wstring folder;
    DWORD flags = 0;
    WORD window = 0;
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    HANDLE errors = nullptr;
};

int lastError() {
    return static_cast<int>(GetLastError());
}

/// Starts the program with its three handles and no other, in a new job that ends with us. Returns
/// 0, or the system's error code.
int startInJob(const ProgramStart& start, StartedProcess& started) {
    started.job = Handle(CreateJobObjectW(nullptr, nullptr));
    if (!started.job || !endWithJob(started.job, true)) {
        return lastError();
    }
    std::vector<HANDLE> handles{start.input};
    for (HANDLE handle : {start.output, start.errors}) {
        if (std::ranges::find(handles, handle) == handles.end()) {  // the system refuses it twice
            handles.push_back(handle);
        }
    }
    HANDLE job = started.job.get();
    StartAttributes attributes(handles, &job);
    if (!attributes) {
        return lastError();
    }
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
    startup.StartupInfo.wShowWindow = start.window;
    startup.StartupInfo.hStdInput = start.input;
    startup.StartupInfo.hStdOutput = start.output;
    startup.StartupInfo.hStdError = start.errors;
    startup.lpAttributeList = attributes.list();
    silenceDialogs();
    std::wstring commandLine = start.commandLine;  // the system may write to it
    PROCESS_INFORMATION information{};
    if (CreateProcessW(nativePath(LongFileName(AString(start.program)), "start").c_str(),
                       commandLine.data(), nullptr, nullptr, TRUE,
                       start.flags | creationFlagsHere(), nullptr, start.folder.c_str(),
                       &startup.StartupInfo, &information) == 0) {
        return lastError();
    }
    const Handle thread(information.hThread);
    started.process = Handle(information.hProcess);
    started.number = information.dwProcessId;
    return 0;
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

/// Whether the program has come to its own end, which is noted: what it has left behind runs on.
bool noteOwnEnd(StartedProcess& process) noexcept {
    if (process.deadline || WaitForSingleObject(process.process.get(), 0) != WAIT_OBJECT_0) {
        return false;
    }
    // A Ctrl-Break reaches every program of the console, so that the first news of the run's end
    // may be the end of this one, which is then none of its own.
    if (exitCodeOf(process) != kEndedByConsole) {
        endWithJob(process.job, false);
    }
    noteEnd(process);
    return true;
}

}  // namespace

void lendCommandLine(char** /*argv*/) noexcept {}  // what keeps programs here is no process

int startProgram(const ProgramRequest& request, ProcessHandle& process) {
    ProgramStart start;
    if (const int error = findProgram(request.program, start.program); error != 0) {
        return error;
    }
    if (isThisProgram(start.program)) {
        VelDebug(0, "error: %s is the program that would start it", start.program);
        return ERROR_ACCESS_DENIED;
    }
    const Handle null = nullDeviceForChild();
    const Handle output = handleForChild(request.output, null);
    const Handle errors = handleForChild(request.errors, null);
    if (!null || !output || !errors) {
        return ERROR_TOO_MANY_OPEN_FILES;
    }
    std::vector<std::string> arguments = request.arguments;
    if (isBatchFile(start.program) && !arguments.empty()) {
        arguments.front() = narrow(fullPath(widen(start.program)));
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

int VeltGetProcessExitCode(ProcessHandle process, int& exitCode) {
    if (!process->exitCode) {
        noteOwnEnd(*process);
    }
    exitCode = process->exitCode.value_or(kStillRunning);
    return 1;
}

bool hasProcessEnded(ProcessHandle process) noexcept {
    return process->exitCode.has_value();
}

void requestProcessTreeEnd(ProcessHandle process) noexcept {
    if (process == nullptr || process->exitCode || process->deadline || noteOwnEnd(*process)) {
        return;
    }
    // Programs without our console cannot be asked.
    const bool isAsked = GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, process->number) != 0;
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
    while (anyLeft(process->job) && std::chrono::steady_clock::now() < *process->deadline) {
        sleepMilliseconds(1);
    }
    TerminateJobObject(process->job.get(), kEndedByUs);
    const auto latest = std::chrono::steady_clock::now() + kPatience;
    while (anyLeft(process->job) && std::chrono::steady_clock::now() < latest) {
        sleepMilliseconds(1);
    }
    noteEnd(*process);
}

}  // namespace tkcore
