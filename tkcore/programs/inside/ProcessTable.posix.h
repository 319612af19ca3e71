#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <vector>

#include <sys/types.h>

// Finds descendants in the system's process table, for Process and its keepers.

namespace tkcore {

struct ProcessEntry final {
    pid_t process = 0;
    pid_t parent = 0;         // 0: there is no such process
    std::uint64_t start = 0;  // on the system's clock; a later process with its number differs
};

/// Whether the process table can be read and has this process under its own number. The table may
/// be missing, or that of another namespace, where numbers mean other processes.
bool isProcessTableOurs() noexcept;

/// The process's entry in the table. Needs no memory.
ProcessEntry lookUp(pid_t process) noexcept;

/// Whether this process has any child, even one that has ended but is not reaped yet.
bool haveChildren() noexcept;

/// Writes direct children of this process, adopted ones included, into the room; returns their
/// number. One may be missing while others end, so look again to find all. Needs no memory if the
/// system lists children itself.
std::size_t childrenOfThisProcess(std::span<pid_t> room) noexcept;

/// The same without the table. It tries every possible process number, which takes about a second.
/// Needs no memory.
std::size_t childrenByTrial(std::span<pid_t> room) noexcept;

/// Kills these children of this process and reaps them. Each is killed together with its process
/// group, in one call, so that a program that starts others without end cannot escape. False if
/// none may be killed. Needs no memory.
bool killChildren(std::span<pid_t> children) noexcept;

/// All descendants of these processes, without the processes themselves.
std::vector<ProcessEntry> descendantsOf(std::set<pid_t> family);

}  // namespace tkcore
