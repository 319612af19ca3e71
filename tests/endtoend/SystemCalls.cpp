// Loaded before the program, makes calls of the system fail that a test names in the environment.

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr std::size_t kBytesBeforeFailure = 100;

/// Whether the path behind the descriptor ends in what the variable says.
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

}  // namespace

/// With NO_UNNAMED_FILES a file system that has only files with names.
extern "C" int openat(int folder, const char* path, int flags, ...) {
    using Open = int (*)(int, const char*, int, mode_t);
    static const auto systemOpen = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "openat"));
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    if ((flags & O_TMPFILE) == O_TMPFILE && std::getenv("NO_UNNAMED_FILES") != nullptr) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return systemOpen(folder, path, flags, mode);
}

/// With KEEPER_FAILS a process that keeps a program fails once it has been started.
extern "C" int dup3(int descriptor, int number, int flags) {
    static const auto systemDup = reinterpret_cast<decltype(&dup3)>(dlsym(RTLD_NEXT, "dup3"));
    if (isKeeper() && std::getenv("KEEPER_FAILS") != nullptr) {
        errno = EMFILE;
        return -1;
    }
    return systemDup(descriptor, number, flags);
}

/// A disk that can be read at the beginning of the file only, or a slow one.
extern "C" ssize_t read(int descriptor, void* buffer, std::size_t size) {
    static const auto systemRead = reinterpret_cast<decltype(&read)>(dlsym(RTLD_NEXT, "read"));
    if (isNamedBy("READ_IS_SLOW", descriptor)) {
        usleep(50'000);
    }
    if (!isNamedBy("READ_FAILS", descriptor)) {
        return systemRead(descriptor, buffer, size);
    }
    if (lseek(descriptor, 0, SEEK_CUR) != 0) {
        errno = EIO;
        return -1;
    }
    return systemRead(descriptor, buffer, std::min(size, kBytesBeforeFailure));
}

#ifndef WITH_SANITIZERS  // they have a malloc of their own

extern "C" void* __libc_malloc(std::size_t size);

/// With KEEPER_WITHOUT_MEMORY a process that keeps a program has none left.
extern "C" void* malloc(std::size_t size) {
    static const bool fails = std::getenv("KEEPER_WITHOUT_MEMORY") != nullptr;
    if (fails && isKeeper()) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}

#endif
