#pragma once

#include <utility>

#include <windows.h>

namespace tkcore {

/// An open handle of the system, closed by its owner's destructor; null if there is none.
class Handle final {
public:
    Handle() = default;
    /// Also takes INVALID_HANDLE_VALUE for none: functions that fail return this or null.
    explicit Handle(HANDLE openHandle) noexcept
        : handle(openHandle == INVALID_HANDLE_VALUE ? nullptr : openHandle) {}
    ~Handle() { close(); }

    Handle(Handle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    explicit operator bool() const noexcept { return handle != nullptr; }
    [[nodiscard]] HANDLE get() const noexcept { return handle; }
    void close() noexcept {
        if (handle != nullptr) {
            CloseHandle(std::exchange(handle, nullptr));
        }
    }

private:
    HANDLE handle = nullptr;
};

}  // namespace tkcore
