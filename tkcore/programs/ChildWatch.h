#pragma once

#include <chrono>
#include <memory>

namespace tkcore {

class ChildProgram;

/// Waits for several programs at once. It reports the system's present state: news that nobody has
/// looked at comes again at the next wait, so none gets lost.
///
/// The waiting loop owns it. It points to programs that others own and must remove() before they
/// destroy them. One thread only.
class ChildWatch final {
public:
    ChildWatch();
    ~ChildWatch();
    ChildWatch(const ChildWatch&) = delete;
    ChildWatch& operator=(const ChildWatch&) = delete;

    /// Adds a program that has just been started. If the system cannot watch it, every look asks
    /// the system instead.
    void add(ChildProgram& child);
    void remove(ChildProgram& child) noexcept;

    /// Returns when a program has printed something or ended, when a request to end has come, or
    /// after the time. Returns after a millisecond at most if the system cannot watch one of the
    /// programs, or if there is none.
    void wait(std::chrono::milliseconds most = std::chrono::milliseconds::max()) noexcept;

    /// Collects news without waiting, for callers that do other work meanwhile.
    void refresh() noexcept;

private:
    struct System;
    std::unique_ptr<System> system;  // null until the first add()
};

}  // namespace tkcore
