// A library to preload. Makes system calls fail that a test names in the environment.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kBytesBeforeFailure = 100;

/// Whether the descriptor's path ends with the variable's value.
bool isNamedBy(const char* variable, int descriptor) {
    const char* ending = std::getenv(variable);
    if (ending == nullptr) {
        return false;
    }
    char path[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return length > 0 && std::string_view(path, static_cast<std::size_t>(length)).ends_with(ending);
}

bool isKeeper() {
    char name[16] = "";
    return prctl(PR_GET_NAME, name) == 0 && std::strcmp(name, "process-keeper") == 0;
}

/// The variable's value, or -1.
long numberIn(const char* variable) {
    const char* text = std::getenv(variable);
    return text == nullptr ? -1 : std::strtol(text, nullptr, 10);
}

/// Whether so many more bytes would make a file larger than MOST_IN_A_FILE. This limit holds only
/// in the program that the process PARENT has started, not in that program's children.
bool isFull(int descriptor, std::size_t size) {
    static const long most = numberIn("MOST_IN_A_FILE");
    static const bool isLimited = most >= 0 && getppid() == numberIn("PARENT");
    struct stat status {};
    return isLimited && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_size + static_cast<off_t>(size) > most;
}

/// The original of a function that is replaced here.
template <typename Call>
Call systemCall(Call /*ours*/, const char* name) {
    return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

int fail(int error) {
    errno = error;
    return -1;
}

std::string textIn(const char* variable) {
    const char* text = std::getenv(variable);
    return text == nullptr ? "" : text;
}

// A keeper's title overwrites the environment, so the variables are read before.
const bool keeperFails = std::getenv("KEEPER_FAILS") != nullptr;
const bool keeperHasNoNullDevice = std::getenv("NO_NULL_DEVICE") != nullptr;
const std::string awaitedFile = textIn("EXECVE_HANGS_UNTIL");

}  // namespace

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t size) {
    static const auto systemWrite = systemCall(&write, "write");
    return isFull(descriptor, size) ? fail(ENOSPC) : systemWrite(descriptor, bytes, size);
}

extern "C" ssize_t pwrite(int descriptor, const void* bytes, std::size_t size, off_t at) {
    static const auto systemWrite = systemCall(&pwrite, "pwrite");
    return isFull(descriptor, size) ? fail(ENOSPC) : systemWrite(descriptor, bytes, size, at);
}

/// The emulator for Windows turns a SIGINT into a new thread at once. During a fork, which holds
/// the locks of the memory, that would wait for itself.
extern "C" pid_t fork() {
    static const auto systemFork = systemCall(&fork, "fork");
    sigset_t interrupt;
    sigset_t older;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, &older);
    const pid_t process = systemFork();
    pthread_sigmask(SIG_SETMASK, &older, nullptr);
    return process;
}

/// HARDWARE_THREADS: the machine has so many.
extern "C" long sysconf(int name) {
    static const auto systemSysconf = systemCall(&sysconf, "sysconf");
    const long threads = numberIn("HARDWARE_THREADS");
    return name == _SC_NPROCESSORS_ONLN && threads >= 0 ? threads : systemSysconf(name);
}

/// NO_UNNAMED_FILES: the file system has no files without a name.
extern "C" int openat(int folder, const char* path, int flags, ...) {
    using Open = int (*)(int, const char*, int, mode_t);
    static const auto systemOpen = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "openat"));
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    if ((flags & O_TMPFILE) == O_TMPFILE && std::getenv("NO_UNNAMED_FILES") != nullptr) {
        return fail(EOPNOTSUPP);
    }
    return systemOpen(folder, path, flags, mode);
}

/// RENAME_FAILS: no file can get that name.
extern "C" int renameat(int from, const char* older, int to, const char* newer) {
    static const auto systemRename = systemCall(&renameat, "renameat");
    const std::string ending = textIn("RENAME_FAILS");
    return !ending.empty() && std::string_view(newer).ends_with(ending)
               ? fail(EIO)
               : systemRename(from, older, to, newer);
}

/// KEEPER_FAILS: a keeper fails after it has been started.
extern "C" int dup3(int descriptor, int number, int flags) {
    static const auto systemDup = systemCall(&dup3, "dup3");
    if (isKeeper() && keeperFails) {
        return fail(EMFILE);
    }
    return systemDup(descriptor, number, flags);
}

/// EXECVE_HANGS_UNTIL: no program starts until there is a file of that name. The call waits like
/// one for a disk that does not answer.
extern "C" int execve(const char* program, char* const argv[], char* const envp[]) {
    static const auto systemExecve = systemCall(&execve, "execve");
    if (isKeeper() && !awaitedFile.empty()) {
        close(creat((awaitedFile + ".awaited").c_str(), 0600));
        while (access(awaitedFile.c_str(), F_OK) != 0) {
            usleep(1000);
        }
    }
    return systemExecve(program, argv, envp);
}

/// NO_NULL_DEVICE: a keeper finds no /dev/null.
extern "C" int open(const char* path, int flags, ...) {
    using Open = int (*)(const char*, int, mode_t);
    static const auto systemOpen = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    if (keeperHasNoNullDevice && isKeeper() && std::string_view(path) == "/dev/null") {
        return fail(ENOENT);
    }
    return systemOpen(path, flags, mode);
}

/// A disk that can be read only at the beginning of the file, a slow disk, or a file that ends
/// after its beginning, as if somebody had cut it off.
extern "C" ssize_t read(int descriptor, void* buffer, std::size_t size) {
    static const auto systemRead = systemCall(&read, "read");
    if (isNamedBy("READ_IS_SLOW", descriptor)) {
        usleep(50'000);
    }
    const bool ends = isNamedBy("READ_ENDS", descriptor);
    if (!ends && !isNamedBy("READ_FAILS", descriptor)) {
        return systemRead(descriptor, buffer, size);
    }
    if (lseek(descriptor, 0, SEEK_CUR) != 0) {
        return ends ? 0 : fail(EIO);
    }
    return systemRead(descriptor, buffer, std::min(size, kBytesBeforeFailure));
}

#ifndef WITH_SANITIZERS  // they have their own malloc

extern "C" void* __libc_malloc(std::size_t size);

/// KEEPER_WITHOUT_MEMORY: a keeper has no memory left. ALLOCATION_FAILS: only the program's
/// allocation of that number fails; a file beside the log shows that it was reached.
extern "C" void* malloc(std::size_t size) {
    static const bool fails = std::getenv("KEEPER_WITHOUT_MEMORY") != nullptr;
    static const long failing = numberIn("ALLOCATION_FAILS");
    static long count = 0;
    if (fails && isKeeper()) {
        errno = ENOMEM;
        return nullptr;
    }
    const char* logAs = std::getenv("TKCORE_LOG");
    if (failing > 0 && ++count == failing && getppid() == numberIn("PARENT") && logAs != nullptr) {
        const char* log = std::strchr(logAs, ':') + 1;
        char path[4096];
        std::snprintf(path, sizeof path, "%.*s/allocation-failed",
                      static_cast<int>(std::strrchr(log, '/') - log), log);
        close(creat(path, 0600));
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}

#endif
