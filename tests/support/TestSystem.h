#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include <sys/types.h>

// Functions of the operating system for the tests.

/// The systems on which a row of a table holds.
enum class On { kBoth, kPosix, kWindows };

constexpr bool isHere(On system) {
    constexpr bool kOnWindows = std::filesystem::path::preferred_separator == '\\';
    return system == On::kBoth || (system == On::kWindows) == kOnWindows;
}

/// Whether a process of this id runs. A process that only waits to be reaped does not run.
bool isRunning(pid_t process);

/// How many files, pipes and the like this process has open.
std::size_t openHandles();

/// Sets an environment variable, or removes it if the value is empty.
void setVariable(const std::string& name, const std::string& value);

/// Makes a pipe with a path; does nothing on a system without those.
void makeFifo(const std::filesystem::path& path);

/// Requests the end of this process, as a user does. It may take a moment until that is noted.
void interruptThisProcess();

/// Whether a signal to end the process may interrupt the caller's thread.
bool signalsReachThisThread();
