#include "support/TestSystem.h"

#include <bit>
#include <cstdint>
#include <cstdlib>

#include <windows.h>

bool isRunning(pid_t process) {
    HANDLE handle = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(process));
    const bool runs = handle != nullptr && WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    CloseHandle(handle);
    return runs;
}

std::size_t openHandles() {
    // Wine has no count of them.
    constexpr std::uintptr_t kFarBeyondAll = 65536;
    std::size_t count = 0;
    for (std::uintptr_t number = 4; number < kFarBeyondAll; number += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(std::bit_cast<HANDLE>(number), &flags) != 0 ? 1 : 0;
    }
    return count;
}

void setVariable(const std::string& name, const std::string& value) {
    _putenv_s(name.c_str(), value.c_str());
}

void makeFifo(const std::filesystem::path& /*path*/) {}

void interruptThisProcess() {
    // All processes of a console get the event, so use our own console.
    FreeConsole();
    AllocConsole();
    GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

bool signalsReachThisThread() {
    return false;  // signals have their own threads
}
