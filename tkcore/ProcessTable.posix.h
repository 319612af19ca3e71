#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include <sys/types.h>

// What the system tells of who descends from whom; used by Process and its keepers alone.

namespace tkcore {

struct ProcessEntry final {
    pid_t process = 0;
    pid_t parent = 0;
};

/// The parent of a process, 0 if there is no such process. Needs no memory.
pid_t parentOf(pid_t process) noexcept;

/// Whether this process has any child, one that has ended but was not reaped included.
bool haveChildren() noexcept;

/// Fills the room with direct children of this process, those included that have fallen to it;
/// returns how many. One may be missing while others end: who ends them all looks again. Needs no
/// memory where the system lists children itself.
std::size_t childrenOfThisProcess(std::span<pid_t> room) noexcept;

/// All that descend from this process.
std::vector<ProcessEntry> descendantsOfThisProcess();

}  // namespace tkcore
