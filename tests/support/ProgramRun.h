#pragma once

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/TemporaryDirectory.h"
#include "support/TestedPrograms.h"

/// How a program is to be started.
struct Command final {
    std::vector<std::string> arguments;  // the program first
    std::map<std::string, std::string> environment;
    std::filesystem::path directory;
    std::vector<std::pair<int, rlim_t>> limits;  // RLIMIT_..., soft limit
    std::filesystem::path output = {};           // for its standard output, if not to be kept
};

struct Outcome final {
    int exitCode = 0;  // 128 + n if signal n ended the program
    std::string output;
    std::string errors;
    long peakMemory = 0;  // bytes
};

/// A started program. The destructor kills it.
class ProgramRun final {
public:
    explicit ProgramRun(const Command& command) : process(fork()) {
        if (process == 0) {
            become(command);
        }
    }
    ~ProgramRun() {
        if (process != 0) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
    }
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    pid_t id() const { return process; }

    Outcome wait() {
        int status = 0;
        rusage usage{};
        wait4(std::exchange(process, 0), &status, 0, &usage);
        return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
                readFile(streams / "output"), readFile(streams / "errors"), usage.ru_maxrss * 1024};
    }

private:
    [[noreturn]] void become(const Command& command) const {
        const int output =
            open((command.output.empty() ? streams / "output" : command.output).c_str(),
                 O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const int errors = open((streams / "errors").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        dup2(output, STDOUT_FILENO);
        dup2(errors, STDERR_FILENO);
        close_range(STDERR_FILENO + 1, ~0U, 0);
        for (const auto& [name, value] : command.environment) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        if (!command.directory.empty()) {
            std::filesystem::current_path(command.directory);
        }
        // No core dump.
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        // Permissions must hold for root, too. Fails, without harm, if we are not root.
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
        for (const auto& [resource, limit] : command.limits) {
            rlimit both{};
            getrlimit(static_cast<__rlimit_resource>(resource), &both);
            both.rlim_cur = limit;
            setrlimit(static_cast<__rlimit_resource>(resource), &both);
        }
        std::vector<char*> argv;
        if (command.arguments.front().ends_with(".exe")) {
            argv.push_back(const_cast<char*>(PROGRAM_LAUNCHER));
        }
        for (const std::string& argument : command.arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        execv(argv.front(), argv.data());
        _exit(127);
    }

    const TemporaryDirectory streams;
    pid_t process;
};

inline Outcome runProgram(const Command& command) {
    return ProgramRun(command).wait();
}
