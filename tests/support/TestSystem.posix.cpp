#include "support/TestSystem.h"

#include <csignal>
#include <cstdlib>
#include <iterator>

#include <sys/stat.h>
#include <unistd.h>

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
    if (value.empty()) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

void makeFifo(const std::filesystem::path& path) {
    if (mkfifo(path.c_str(), 0666) != 0) {
        throw std::runtime_error("cannot make the pipe " + path.string());
    }
}

void dieByKilling() {
    kill(getpid(), SIGKILL);
    std::abort();
}

void interruptThisProcess() {
    raise(SIGTERM);
}

bool signalsReachThisThread() {
    sigset_t blocked{};
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, SIGTERM) == 0;
}
