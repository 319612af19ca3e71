#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <vector>

#include <sys/types.h>

// What the system tells of who descends from whom; used by Process and its keepers alone.

namespace tkcore {

struct ProcessEntry final {
    pid_t process = 0;
    pid_t parent = 0;         // 0: there is no such process
    std::uint64_t start = 0;  // on the system's clock: tells it from a later one with its number
};

/// Whether the system's table of processes can be read and has this process under its own number:
/// it may be missing, or be that of other processes, whose numbers mean others than ours.
bool isProcessTableOurs() noexcept;

/// The process, as far as the table has it. Needs no memory.
ProcessEntry lookUp(pid_t process) noexcept;

/// Whether this process has any child, one that has ended but was not reaped included.
bool haveChildren() noexcept;

/// Fills the room with direct children of this process, those included that have fallen to it;
/// returns how many. One may be missing while others end: who ends them all looks again. Needs no
/// memory where the system lists children itself.
std::size_t childrenOfThisProcess(std::span<pid_t> room) noexcept;

/// The same without the table: every number that a process can have is tried, which takes about a
/// second. Needs no memory.
std::size_t childrenByTrial(std::span<pid_t> room) noexcept;

/// Kills these children of this process, each with all of its process group at one stroke, which no
/// program that starts others for ever can be ahead of; then reaps them. False if none may be
/// killed. Needs no memory.
bool killChildren(std::span<pid_t> children) noexcept;

/// All that descend from these processes, which are not among them.
std::vector<ProcessEntry> descendantsOf(std::set<pid_t> family);

}  // namespace tkcore
