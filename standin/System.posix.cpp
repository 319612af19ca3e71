#include "standin/System.h"

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace standin {
namespace {

constexpr int kNone = -1;

bool writeWhole(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

void throwIf(int error, const std::filesystem::path& path) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), path.string());
    }
}

}  // namespace

std::filesystem::path toPath(const std::string& text) {
    return text;
}

std::string pathText(const std::filesystem::path& path) {
    return path.string();
}

struct WritableFile::OpenFile {
    int descriptor = kNone;
};

WritableFile::WritableFile(const std::string& path, Mode mode)
    : file(std::make_unique<OpenFile>()) {
    constexpr int kReadableAndWritable = 0666;
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (mode == Mode::kAppend ? O_APPEND : O_TRUNC);
    file->descriptor = ::open(path.c_str(), flags, kReadableAndWritable);
}

WritableFile::~WritableFile() {
    close();
}

bool WritableFile::isOpen() const {
    return file->descriptor != kNone;
}

bool WritableFile::write(std::string_view bytes) {
    return writeWhole(file->descriptor, bytes);
}

bool WritableFile::close() {
    return !isOpen() || ::close(std::exchange(file->descriptor, kNone)) == 0;
}

std::string lastFailure() {
    return std::generic_category().message(errno);
}

bool writeToStandardOutput(std::string_view bytes) {
    return writeWhole(STDOUT_FILENO, bytes);
}

bool isStandardErrorATerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

unsigned long processNumber() {
    return static_cast<unsigned long>(::getpid());
}

std::filesystem::path ownProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

void sleepForEver() {
    while (true) {
        ::pause();
    }
}

void endBySignal(int signal) {
    // A handler, as a sanitizer has one for crashes, would make an exit of it.
    std::signal(signal, SIG_DFL);
    ::kill(::getpid(), signal);
}

void start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
           Session session) {
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, session == Session::kItsOwn ? POSIX_SPAWN_SETSID : 0);
    const int error =
        ::posix_spawn(nullptr, program.c_str(), nullptr, &attributes, pointers.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    throwIf(error, program);
}

void become(const std::filesystem::path& program, char** argv) {
    ::execv(program.c_str(), argv);
    throw std::system_error(errno, std::generic_category(), program.string());
}

void makeFifo(const std::filesystem::path& path) {
    constexpr int kOurs = 0600;
    throwIf(::mkfifo(path.c_str(), kOurs) == 0 ? 0 : errno, path);
}

const char* databaseFileAccess() {
    return nullptr;
}

}  // namespace standin
