#pragma once

#include <memory>
#include <string_view>

#include "tkcore/system/Stream.h"

namespace tkcore {

/// One line on the terminal that standard error is, rewritten in place. There is at most one in a
/// process; a signal that ends the process at once erases it, and so does the log before it writes.
///
/// Where standard error is no terminal, or one that cannot erase a line, nothing is ever written;
/// neither is it while the terminal belongs to another job, or takes no more text.
class TerminalLine final {
public:
    TerminalLine();
    ~TerminalLine();  // erases it
    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;

    /// Whether there is a terminal for it.
    [[nodiscard]] bool isPossible() const noexcept { return system != nullptr; }

    /// How many columns a text may take on the terminal as it is now, so that it never wraps.
    [[nodiscard]] unsigned columns() const noexcept;

    /// Shows the text in place of the one before, cut to the columns. What the terminal cannot
    /// print is shown as "?".
    void show(std::wstring_view text);

private:
    struct System;
    std::unique_ptr<System> system;
};

/// Erases the line that is shown, if any; for whoever prints something else next.
void eraseTerminalLine() noexcept;

/// Whether somebody may read it: standard error is a terminal that can show such a line.
bool isPersonAtTerminal() noexcept;

/// Writes a line that stays, where there may be a person; nothing elsewhere. What the terminal
/// cannot print is shown as "?".
void printOnTerminal(std::wstring_view text);

/// Writes a short line, which ends in "\n", to an output of the process, with the line end of this
/// system. Waits like writeTo(), but hardly for a console that takes no text for now: what there is
/// to do behind the line must get done.
void printLine(Stream stream, std::string_view line) noexcept;

/// Waits until consoles have taken all lines, but no longer than until a request to end the program
/// has come. For the end of the process.
void finishLines() noexcept;

}  // namespace tkcore
