#pragma once

#include <string>
#include <utility>

namespace tkcore {

/// An open file of the system, closed with its owner; negative while there is none.
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

/// By which the system knows the open file as long as it is open, if its view of processes is
/// there.
std::string descriptorPath(const FileDescriptor& descriptor);

}  // namespace tkcore
