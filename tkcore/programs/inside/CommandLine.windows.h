#pragma once

#include <string>
#include <vector>

// Makes the command line, a single text, from a program's arguments.

namespace tkcore {

/// The command line in the form that the program's C runtime parses.
std::wstring commandLineOf(const std::vector<std::string>& arguments);

/// Whether the system starts its command interpreter for the file.
bool isBatchFile(const std::string& program);

/// The first argument in which the command interpreter would replace a text between percent signs,
/// perhaps by a command; empty if there is none.
std::string argumentForAnInterpreter(const std::vector<std::string>& arguments);

}  // namespace tkcore
