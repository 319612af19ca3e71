#pragma once

#include <string>
#include <vector>

// The one text that a program is started with, made of its arguments.

namespace tkcore {

/// As the C runtime of the program takes it apart again.
std::wstring commandLineOf(const std::vector<std::string>& arguments);

/// Whether the system starts its command interpreter for the file.
bool isBatchFile(const std::string& program);

/// The first of the arguments in which the command interpreter would put something else for what
/// stands between percent signs, perhaps a command; empty if there is none.
std::string argumentForAnInterpreter(const std::vector<std::string>& arguments);

}  // namespace tkcore
