#pragma once

#include <string>

#include "tkcore/programs/inside/StartedProcess.windows.h"

namespace tkcore {

/// Everything that a program's start needs.
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

/// Starts the program with its three handles and no other, in a new job that ends with us. If the
/// system refuses the job, the program runs without one; that is logged. Returns 0 or the system's
/// error code.
int startInJob(const ProgramStart& start, StartedProcess& started);

/// Sets whether the job's processes end when its last handle is closed.
bool endWithJob(const Handle& job, bool wanted) noexcept;

}  // namespace tkcore
