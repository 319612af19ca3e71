#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include <sys/types.h>

// What the tests ask of the operating system.

/// Chooses the rows of a table that hold on the system at hand.
inline constexpr bool kOnWindows = std::filesystem::path::preferred_separator == '\\';

/// Whether a process of this id runs; one that only waits to be reaped does not.
bool isRunning(pid_t process);

/// How many files, pipes and the like this process holds open.
std::size_t openHandles();

/// Sets an environment variable; without a value takes it away.
void setVariable(const std::string& name, const std::string& value);

/// Makes a pipe that has a path, where there is such a thing; else leaves the path without a file.
void makeFifo(const std::filesystem::path& path);

/// Ends this process as somebody does who kills it.
[[noreturn]] void dieByKilling();
