#include "tkcore/report/Terminal.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <string>

#include <windows.h>

#include "tkcore/report/inside/ConsoleWriter.windows.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/text/CodePage.h"

namespace tkcore {

namespace {

constexpr unsigned kUsualColumns = 80;
constexpr wchar_t kQuestionMark = L'?';
/// From here on characters may take two columns.
constexpr wchar_t kFirstWide = 0x1100;

std::atomic<HANDLE> console = nullptr;
std::atomic<bool> isShown = false;
/// When it was last waited for, the console had not taken all.
std::atomic<bool> isStopped = false;

unsigned consoleColumns() noexcept {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    const bool isKnown = GetConsoleScreenBufferInfo(console, &screen) != 0;
    const int window = screen.srWindow.Right - screen.srWindow.Left + 1;
    const int width = std::min<int>(screen.dwSize.X, window);
    return (isKnown && width > 0 ? static_cast<unsigned>(width) : kUsualColumns) - 1;
}

/// Whether the character can be in a line: not half a character, and not without width or shape.
bool isPrintable(wchar_t character) noexcept {
    WORD type = 0;
    WORD shape = 0;
    GetStringTypeW(CT_CTYPE1, &character, 1, &type);
    GetStringTypeW(CT_CTYPE3, &character, 1, &shape);
    return (type & C1_DEFINED) != 0 && (type & C1_CNTRL) == 0 && (shape & C3_NONSPACING) == 0 &&
           !IS_HIGH_SURROGATE(character) && !IS_LOW_SURROGATE(character);
}

HANDLE handleOf(Stream stream) noexcept {
    return GetStdHandle(stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

bool isConsole(Stream stream) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

/// Standard error, if it is a console that can do more than print plain text; otherwise null.
HANDLE openConsole() noexcept {
    const char* type = std::getenv("TERM");
    const bool isDumb = type != nullptr && std::string_view(type) == "dumb";
    return !isDumb && isConsole(Stream::kErrors) ? handleOf(Stream::kErrors) : nullptr;
}

/// Writes to the console, the same one for both outputs.
void writeToConsole(const std::wstring& text) {
    HANDLE handle = handleOf(isConsole(Stream::kErrors) ? Stream::kErrors : Stream::kOutput);
    DWORD written = 0;
    WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

/// The only writer, made when there is a console; null if the system cannot start its thread.
ConsoleWriter* consoleWriter() noexcept {
    static const std::unique_ptr<ConsoleWriter> kWriter = []() -> std::unique_ptr<ConsoleWriter> {
        try {
            return std::make_unique<ConsoleWriter>(writeToConsole);
        } catch (const std::exception&) {
            return nullptr;
        }
    }();
    return kWriter.get();
}

/// Waits for the console; never again after one wait has been too short.
void waitForConsole() {
    constexpr std::chrono::seconds kPatience{1};
    isStopped = !consoleWriter()->waitFor(isStopped ? std::chrono::seconds(0) : kPatience);
}

/// The text, then blanks, with the cursor back at the start of the line. Blanks, because no control
/// sequence erases a line on every console.
std::wstring lineOf(std::wstring_view text) {
    unsigned columns = consoleColumns();
    std::wstring line = L"\r";
    for (const wchar_t character : text) {
        const wchar_t shown = isPrintable(character) ? character : kQuestionMark;
        const unsigned width = shown < kFirstWide ? 1 : 2;
        if (width > columns) {
            break;
        }
        columns -= width;
        line.push_back(shown);
    }
    return line.append(columns, L' ').append(L"\r");
}

}  // namespace

struct TerminalLine::System final {
    explicit System(HANDLE handle) { console = handle; }
    ~System() {
        eraseTerminalLine();
        console = nullptr;
    }
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    std::wstring shown;
};

TerminalLine::TerminalLine() {
    if (HANDLE handle = openConsole(); handle != nullptr && consoleWriter() != nullptr) {
        system = std::make_unique<System>(handle);
    }
}

TerminalLine::~TerminalLine() = default;

unsigned TerminalLine::columns() const noexcept {
    return system ? consoleColumns() : 0;
}

void TerminalLine::show(std::wstring_view text) {
    if (!system) {
        return;
    }
    std::wstring line = lineOf(text);
    if (isShown && line == system->shown) {
        return;
    }
    isShown = true;
    consoleWriter()->show(line);
    system->shown = std::move(line);
}

bool isPersonAtTerminal() noexcept {
    return openConsole() != nullptr;
}

void printOnTerminal(std::wstring_view text) {
    if (openConsole() != nullptr && consoleWriter() != nullptr) {
        eraseTerminalLine();
        std::wstring line(text);
        std::ranges::replace_if(line, std::not_fn(isPrintable), kQuestionMark);
        consoleWriter()->print(line + L"\r\n");
        waitForConsole();
    }
}

void printLine(Stream stream, std::string_view line) noexcept {
    if (isConsole(stream) && consoleWriter() != nullptr) {
        try {
            consoleWriter()->print(widen(line.substr(0, line.size() - 1)) + L"\r\n");
            return waitForConsole();
        } catch (const std::bad_alloc&) {  // then it is written here
        }
    }
    constexpr std::string_view kLineEnd = "\r\n";
    std::array<char, 256> whole;
    const std::size_t size = std::min(line.size() - 1, whole.size() - kLineEnd.size());
    char* end = std::copy_n(line.begin(), size, whole.begin());
    writeTo(stream, {whole.data(), std::ranges::copy(kLineEnd, end).out});
}

void finishLines() noexcept {
    constexpr std::chrono::milliseconds kBetweenLooks{100};
    while (isStopped && !isEndRequested()) {
        isStopped = !consoleWriter()->waitFor(kBetweenLooks);
    }
}

void eraseTerminalLine() noexcept {
    if (isShown.exchange(false)) {
        try {
            consoleWriter()->show(lineOf({}));
            waitForConsole();
        } catch (const std::bad_alloc&) {
            return;  // the next text overwrites it
        }
    }
}

}  // namespace tkcore
