#pragma once

#include <filesystem>
#include <string>

/// What the scripted program asks of the system.
namespace system_of_script {

/// The path by which this program was started, links followed.
std::filesystem::path ownProgram();
unsigned long ownProcess();

/// Makes the standard streams take every byte as it is.
void writeBytesUnchanged();

/// Starts a program without arguments and does not wait for it; detached, nothing that is sent to
/// the programs of this terminal reaches it.
void start(const std::filesystem::path& program, bool detached);

/// Goes on as another program with the same arguments, and ends as that one does.
[[noreturn]] void become(const std::filesystem::path& program, char** argv);

/// Commands that only some systems know; false if this one does not.
bool obey(const std::string& command, const std::string& argument);

}  // namespace system_of_script
