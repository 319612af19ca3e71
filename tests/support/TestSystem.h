#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include <sys/types.h>

// What the tests ask of the operating system.

/// Where a row of a table holds.
enum class On { kBoth, kPosix, kWindows };

constexpr bool isHere(On system) {
    constexpr bool kOnWindows = std::filesystem::path::preferred_separator == '\\';
    return system == On::kBoth || (system == On::kWindows) == kOnWindows;
}

/// Whether a process of this id runs; one that only waits to be reaped does not.
bool isRunning(pid_t process);

/// How many files, pipes and the like this process holds open.
std::size_t openHandles();

/// Without a value the environment variable is taken away.
void setVariable(const std::string& name, const std::string& value);

/// A pipe that has a path; where there is no such thing, nothing.
void makeFifo(const std::filesystem::path& path);

/// As somebody does who wants this process to end; it may take a moment until that is noted.
void interruptThisProcess();

/// Whether a signal that asks the process to end may interrupt the caller's thread.
bool signalsReachThisThread();
