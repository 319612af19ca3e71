#pragma once

namespace tkcore {

/// How often the system has said that a child ended, or wrote to a pipe that announces it. While
/// the number stays, what was last found out about children and their pipes still holds, without
/// a system call: that is what makes polling many of them cheap. The first call begins the count.
int childNews() noexcept;

/// Lets the read end of a pipe announce what is written to it; false where it cannot.
bool announceWrites(int readEnd) noexcept;

}  // namespace tkcore
