#include "support/ScriptedSystem.h"

#include <cstdlib>
#include <system_error>

#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace system_of_script {

std::filesystem::path ownProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

unsigned long ownProcess() {
    return static_cast<unsigned long>(getpid());
}

void writeBytesUnchanged() {}

void start(const std::filesystem::path& program, bool detached) {
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, detached ? POSIX_SPAWN_SETSID : 0);
    std::string name = program.string();
    char* argv[] = {name.data(), nullptr};
    const int error = posix_spawn(nullptr, name.c_str(), nullptr, &attributes, argv, environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        throw std::system_error(error, std::system_category(), name);
    }
}

void become(const std::filesystem::path& program, char** argv) {
    execv(program.c_str(), argv);
    throw std::system_error(errno, std::system_category(), program.string());
}

bool obey(const std::string& command, const std::string& argument) {
    if (command == "make-fifo") {
        return mkfifo(argument.c_str(), 0600) == 0;
    }
    return command == "end-by" && raise(std::stoi(argument)) == 0;
}

}  // namespace system_of_script
