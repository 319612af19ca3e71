#pragma once

#include <cerrno>
#include <cstddef>
#include <span>
#include <string>
#include <utility>

#include <sys/types.h>

namespace tkcore {

/// A file descriptor, closed by its owner's destructor; negative if there is none.
class FileDescriptor final {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int openDescriptor) noexcept : descriptor(openDescriptor) {}
    ~FileDescriptor() { close(); }

    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor(std::exchange(other.descriptor, kNone)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor, other.descriptor);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    explicit operator bool() const noexcept { return descriptor >= 0; }
    [[nodiscard]] int get() const noexcept { return descriptor; }
    void close() noexcept;

private:
    static constexpr int kNone = -1;

    int descriptor = kNone;
};

/// A path to the open file, valid while it is open. Needs /proc.
std::string descriptorPath(const FileDescriptor& descriptor);

/// The result of a system call, which is repeated as long as a signal interrupts it.
template <typename Call>
ssize_t uninterrupted(const Call& call) {
    for (;;) {
        const ssize_t result = call();
        if (result >= 0 || errno != EINTR) {
            return result;
        }
    }
}

/// Repeats a system call until it has written all bytes; false with errno if it fails.
template <typename Write>
bool writeAll(std::span<const char> bytes, const Write& write) {
    while (!bytes.empty()) {
        const ssize_t count = uninterrupted([&] { return write(bytes); });
        if (count <= 0) {
            errno = count == 0 ? ENOSPC : errno;
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace tkcore
