#include "tkcore/programs/inside/ProgramStart.windows.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "tkcore/files/NativePath.windows.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/System.h"

namespace tkcore {

namespace {

/// The attributes of a start: the handles that the child gets, and the job, if any, that it starts
/// in.
class StartAttributes final {
public:
    StartAttributes(std::span<HANDLE> handles, std::span<HANDLE> jobs) {
        const DWORD count = jobs.empty() ? 1 : 2;
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, count, 0, &size);
        room.resize(size);
        isGood = InitializeProcThreadAttributeList(list(), count, 0, &size) != 0 &&
                 add(PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles) &&
                 (jobs.empty() || add(PROC_THREAD_ATTRIBUTE_JOB_LIST, jobs));
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
    bool add(DWORD_PTR attribute, std::span<HANDLE> value) {
        return UpdateProcThreadAttribute(list(), 0, attribute, value.data(), value.size_bytes(),
                                         nullptr, nullptr) != 0;
    }

    std::vector<std::byte> room;
    bool isGood = false;
};

/// A separate process group: the console's Ctrl-C, which is meant for us, does not reach the child,
/// and we can send the child a Ctrl-Break. If we have no console, the child must not open one. It
/// is created suspended, so that it begins only inside its job.
DWORD creationFlagsHere() {
    const bool haveConsole = GetConsoleCP() != 0;
    return EXTENDED_STARTUPINFO_PRESENT | CREATE_NEW_PROCESS_GROUP | CREATE_SUSPENDED |
           (haveConsole ? 0 : CREATE_NO_WINDOW);
}

/// Without this a child that crashes, or finds no disk in a drive, would wait for a click.
void silenceDialogs() {
    SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
}

/// Creates the suspended process in the jobs, none or one. Returns 0, or the system's error code.
DWORD create(const ProgramStart& start, std::span<HANDLE> jobs, PROCESS_INFORMATION& created) {
    std::vector<HANDLE> handles{start.input};
    for (HANDLE handle : {start.output, start.errors}) {
        if (std::ranges::find(handles, handle) == handles.end()) {  // the system refuses it twice
            handles.push_back(handle);
        }
    }
    StartAttributes attributes(handles, jobs);
    if (!attributes) {
        return GetLastError();
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
    const std::wstring program = nativePath(LongFileName(AString(start.program)), "start");
    std::wstring commandLine = start.commandLine;  // the system may write to it
    const bool isCreated =
        CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                       start.flags | creationFlagsHere(), nullptr, start.folder.c_str(),
                       &startup.StartupInfo, &created) != 0;
    return isCreated ? 0 : GetLastError();
}

/// Moves the child into the job: the interpreter of a batch file may not have started in it.
bool bringIntoJob(const StartedProcess& started) {
    BOOL isThere = FALSE;
    return (IsProcessInJob(started.process.get(), started.job.get(), &isThere) != 0 &&
            isThere != FALSE) ||
           AssignProcessToJobObject(started.job.get(), started.process.get()) != 0;
}

}  // namespace

int startInJob(const ProgramStart& start, StartedProcess& started) {
    started.job = Handle(CreateJobObjectW(nullptr, nullptr));
    if (!started.job || !endWithJob(started.job, true)) {
        return static_cast<int>(GetLastError());
    }
    HANDLE job = started.job.get();
    PROCESS_INFORMATION created{};
    DWORD error = create(start, {&job, 1}, created);
    if (error == ERROR_ACCESS_DENIED) {  // perhaps our own job does not allow another one in it
        error = create(start, {}, created);
    }
    if (error != 0) {
        return static_cast<int>(error);
    }
    const Handle thread(created.hThread);
    started.process = Handle(created.hProcess);
    started.number = created.dwProcessId;
    if (!bringIntoJob(started)) {
        const DWORD reason = GetLastError();
        started.job.close();
        warn(AString::Format("%s has no job: what it starts may outlive the run: %s", start.program,
                             systemMessage(static_cast<int>(reason))));
    }
    if (ResumeThread(thread.get()) == static_cast<DWORD>(-1)) {
        error = GetLastError();
        TerminateProcess(started.process.get(), 1);
    }
    return static_cast<int>(error);
}

bool endWithJob(const Handle& job, bool wanted) noexcept {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = wanted ? JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE : 0;
    return SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                   sizeof limits) != 0;
}

}  // namespace tkcore
