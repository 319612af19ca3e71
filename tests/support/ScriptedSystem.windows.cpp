#include "support/ScriptedSystem.h"

#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace system_of_script {

namespace {

HANDLE startProcess(const std::filesystem::path& program, std::wstring commandLine, DWORD flags) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, flags, nullptr,
                       nullptr, &startup, &process) == 0) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

}  // namespace

std::filesystem::path ownProgram() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

unsigned long ownProcess() {
    return GetCurrentProcessId();
}

void writeBytesUnchanged() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

void start(const std::filesystem::path& program, bool detached) {
    const DWORD apart = DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP;
    CloseHandle(startProcess(program, L"\"" + program.wstring() + L"\"", detached ? apart : 0));
}

void become(const std::filesystem::path& program, char** /*argv*/) {
    const HANDLE process = startProcess(program, GetCommandLineW(), 0);
    DWORD code = 0;
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    ExitProcess(code);
}

bool obey(const std::string& /*command*/, const std::string& /*argument*/) {
    return false;
}

}  // namespace system_of_script
