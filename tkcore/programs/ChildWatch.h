#pragma once

#include <chrono>
#include <memory>

namespace tkcore {

class ChildProgram;

/// Waits for several programs at once. What it tells comes from the system's state at that moment:
/// news that nobody has looked at yet is told again at the next wait, so none gets lost.
///
/// Owned by the loop that waits; looks at programs that others own, and that must be taken out
/// before they are destroyed. One thread only.
class ChildWatch final {
public:
    ChildWatch();
    ~ChildWatch();
    ChildWatch(const ChildWatch&) = delete;
    ChildWatch& operator=(const ChildWatch&) = delete;

    /// Takes in a program that has just been started. Where the system has no means to watch it,
    /// it is asked at every look instead.
    void add(ChildProgram& child);
    void remove(ChildProgram& child) noexcept;

    /// Returns as soon as a program has printed something or ended, which is then worth a look, or
    /// a request to end has come; at the latest after the time. Where the system has no means to
    /// watch one of them, after a millisecond; where there is none, at once.
    void wait(std::chrono::milliseconds most = std::chrono::milliseconds::max()) noexcept;

    /// The same without waiting, for who does something else meanwhile.
    void refresh() noexcept;

private:
    struct System;
    std::unique_ptr<System> system;  // once there is something to watch
};

}  // namespace tkcore
