#pragma once

#include <string>

// POSIX only: what Process.posix.cpp builds on.

namespace tkcore {

/// Sets path to the absolute path of the program to start. A name without a separator is looked
/// up along PATH alone: not in the current directory, unless PATH names it. Returns 0 or the
/// system's error code.
int findProgram(const std::string& name, std::string& path);

}  // namespace tkcore
