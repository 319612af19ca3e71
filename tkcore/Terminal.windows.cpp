#include "tkcore/Terminal.h"

#include <string>

#include <windows.h>

namespace tkcore {

namespace {

constexpr unsigned kUsualColumns = 80;

/// The console that standard error is, null if it is none; and whether a line is shown on it.
HANDLE console = nullptr;
bool isShown = false;

void write(std::wstring_view text) noexcept {
    DWORD written = 0;
    WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

/// Anything beyond ASCII may take two columns.
unsigned columnsOf(wchar_t character) {
    return character < 0x7F ? 1 : 2;
}

}  // namespace

/// Lets the console understand how a line is erased; as it was when destroyed.
struct TerminalLine::System final {
    System() : handle(GetStdHandle(STD_ERROR_HANDLE)) {
        if (GetConsoleMode(handle, &modeBefore) != 0 &&
            SetConsoleMode(handle, modeBefore | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0) {
            console = handle;
        }
    }
    ~System() {
        if (console != nullptr) {
            eraseTerminalLine();
            SetConsoleMode(handle, modeBefore);
            console = nullptr;
        }
    }
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    const HANDLE handle;
    DWORD modeBefore = 0;
};

TerminalLine::TerminalLine() : system(std::make_unique<System>()) {
    if (console == nullptr) {
        system.reset();
    }
}

TerminalLine::~TerminalLine() = default;

unsigned TerminalLine::columns() const noexcept {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const bool isKnown = system && GetConsoleScreenBufferInfo(console, &info) != 0 &&
                         info.srWindow.Right > info.srWindow.Left;
    return isKnown ? static_cast<unsigned>(info.srWindow.Right - info.srWindow.Left)
                   : kUsualColumns - 1;
}

void TerminalLine::show(std::wstring_view text) {
    if (!system) {
        return;
    }
    std::wstring fitted = L"\r";
    unsigned left = columns();
    for (const wchar_t character : text) {
        if (columnsOf(character) > left) {
            break;
        }
        left -= columnsOf(character);
        fitted += character < L' ' || character == 0x7F ? L'?' : character;
    }
    write(fitted + L"\x1b[K\r");
    isShown = true;
}

void eraseTerminalLine() noexcept {
    if (isShown) {
        write(L"\r\x1b[K");
        isShown = false;
    }
}

}  // namespace tkcore
