#pragma once

#include <memory>
#include <string_view>

#include "tkcore/system/Stream.h"

namespace tkcore {

/// A line on the terminal behind standard error, rewritten in place. A process has at most one. It
/// is erased before the log writes, and by a signal that ends the process at once.
///
/// Nothing is written if standard error is no terminal or the terminal cannot erase a line, nor
/// while the terminal belongs to another job or takes no more text.
class TerminalLine final {
public:
    TerminalLine();
    ~TerminalLine();  // erases it
    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;

    /// Whether there is a suitable terminal.
    [[nodiscard]] bool isPossible() const noexcept { return system != nullptr; }

    /// How many columns a text may have at the terminal's present width without wrapping.
    [[nodiscard]] unsigned columns() const noexcept;

    /// Shows the text, cut to the columns, in place of the one before. Shows "?" for characters
    /// that the terminal cannot print.
    void show(std::wstring_view text);

private:
    struct System;
    std::unique_ptr<System> system;
};

/// Erases the line, if there is one, before something else is printed.
void eraseTerminalLine() noexcept;

/// Whether a person may read standard error: it is a terminal that can show a status line.
bool isPersonAtTerminal() noexcept;

/// Writes a line that stays, if isPersonAtTerminal(). Shows "?" for characters that the terminal
/// cannot print.
void printOnTerminal(std::wstring_view text);

/// Writes a short line, which ends in "\n", to an output of the process, with the system's line
/// end. Waits as writeTo() does, but only briefly for a console that takes no text at present, so
/// that the work after the line gets done.
void printLine(Stream stream, std::string_view line) noexcept;

/// Waits until consoles have taken all lines, but not after a request to end the program. To be
/// called at the end of the process.
void finishLines() noexcept;

}  // namespace tkcore
