#pragma once

#include <string>

// What VeltCreateProcess builds on.

namespace tkcore {

/// Sets path to the absolute path of the program to start. A name without a separator is looked up
/// along PATH alone, where the system's programs expect it in the folder of the running program
/// before that, and never in the current directory, unless PATH names it. Returns 0 or the system's
/// error code.
int findProgram(const std::string& name, std::string& path);

/// Whether the path leads to the program that runs here.
bool isThisProgram(const std::string& path);

}  // namespace tkcore
