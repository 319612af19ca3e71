#include "support/TestSystem.h"

#include <csignal>
#include <cstdlib>
#include <iterator>

#include <sys/stat.h>

#include "support/TemporaryDirectory.h"

bool isRunning(pid_t process) {
    const std::string status = readFile("/proc/" + std::to_string(process) + "/stat");
    const std::size_t nameEnd = status.rfind(')');
    return nameEnd != std::string::npos && status.substr(nameEnd, 4) != ") Z ";
}

std::size_t openHandles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

void setVariable(const std::string& name, const std::string& value) {
    value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
}

void makeFifo(const std::filesystem::path& path) {
    mkfifo(path.c_str(), 0666);
}

void interruptThisProcess() {
    raise(SIGTERM);
}

bool signalsReachThisThread() {
    sigset_t blocked{};
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, SIGTERM) == 0;
}
