#include "tkcore/report/Terminal.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <string>
#include <utility>

#include <fcntl.h>
#include <langinfo.h>
#include <locale.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

namespace {

constexpr unsigned kUsualColumns = 80;
constexpr int kMillisecondsToErase = 1000;
constexpr int kMillisecondsToPrint = 1000;
constexpr std::string_view kUtf8 = "UTF-8";
constexpr std::string_view kEraseLine = "\r\x1b[K";
constexpr std::string_view kEraseBelow = "\r\x1b[J";

/// Signals that end a process at once; those of noteInterruptions() are not among them.
constexpr std::array kDeadlySignals{SIGQUIT, SIGILL,  SIGTRAP, SIGABRT, SIGBUS,
                                    SIGFPE,  SIGSEGV, SIGSYS,  SIGALRM};

// The state that a handler of these signals needs.
std::atomic<int> terminal = -1;
std::atomic<unsigned> shownColumns = 0;  // 0: no line is shown

/// A descriptor of the terminal that never blocks; standard error if the terminal cannot be opened
/// again.
FileDescriptor openTerminal() {
    FileDescriptor opened(open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return opened ? std::move(opened) : FileDescriptor(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0));
}

unsigned terminalColumns() noexcept {
    winsize size{};
    const bool isKnown = ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return (isKnown ? size.ws_col : kUsualColumns) - 1;
}

/// A job in the background must not write into another job's output, and might be stopped for it.
bool isForeground() noexcept {
    const pid_t group = tcgetpgrp(terminal);
    return group <= 0 || group == getpgrp();
}

/// False if the terminal takes no text within the time: the user may have stopped its output.
bool write(std::string_view bytes, int milliseconds) noexcept {
    pollfd room{terminal, POLLOUT, 0};
    return isForeground() && poll(&room, 1, milliseconds) > 0 &&
           ::write(terminal, bytes.data(), bytes.size()) > 0;
}

/// Writes also for a job in the background, and text that a terminal takes in parts. After one
/// failure within the time it does not wait for the terminal again.
void writeWithin(std::string_view bytes, int milliseconds) {
    static bool isStopped = false;
    const FileDescriptor opened = openTerminal();
    while (!bytes.empty()) {
        pollfd room{opened.get(), POLLOUT, 0};
        const int ready = poll(&room, 1, isStopped ? 0 : milliseconds);
        const ssize_t count = ready > 0 ? ::write(opened.get(), bytes.data(), bytes.size()) : 0;
        isStopped = count <= 0;
        if (isStopped) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// The code that erases the line. If the terminal has become narrower, it shows the line's rest
/// below; then the code erases that, too.
std::string_view eraser(unsigned columns) noexcept {
    return columns < shownColumns ? kEraseBelow : kEraseLine;
}

extern "C" void eraseAndEnd(int signal) {
    eraseTerminalLine();
    raise(signal);  // now with the system's own action
}

void eraseBeforeDeath() {
    for (const int signal : kDeadlySignals) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            action = {};
            action.sa_handler = eraseAndEnd;
            action.sa_flags = static_cast<int>(SA_RESETHAND);
            sigaction(signal, &action, nullptr);
        }
    }
}

/// While an object of this class exists, the user's character encoding, that of the terminal,
/// applies. Any other than UTF-8 needs a converter that the C library loads; a static program
/// crashes in a converter of another version.
class UserLocale final {
public:
    UserLocale() : previous(uselocale(locale())) {}
    ~UserLocale() { uselocale(previous); }
    UserLocale(const UserLocale&) = delete;
    UserLocale& operator=(const UserLocale&) = delete;

private:
    static locale_t locale() {
        static const locale_t kUsers = newlocale(LC_CTYPE_MASK, "", nullptr);
        static const locale_t kPlain = newlocale(LC_CTYPE_MASK, "C", nullptr);
        const bool isUtf8 = kUsers != nullptr && nl_langinfo_l(CODESET, kUsers) == kUtf8;
        return isUtf8 ? kUsers : kPlain;
    }

    locale_t previous;
};

/// A character as the terminal gets it. Characters that change the direction of writing, among
/// others, have no width.
struct Glyph final {
    explicit Glyph(wchar_t character) {
        const int width = wcwidth(character);
        std::mbstate_t state{};
        if (width > 0) {
            size = std::wcrtomb(bytes.data(), character, &state);
            columns = static_cast<unsigned>(width);
        }
        if (size == 0 || size > bytes.size()) {
            bytes.front() = '?';
            size = columns = 1;
        }
    }

    std::array<char, MB_LEN_MAX> bytes{};
    std::size_t size = 0;
    unsigned columns = 0;
};

struct FittedText final {
    FittedText(std::wstring_view text, unsigned most) {
        const UserLocale locale;
        for (const wchar_t character : text) {
            const Glyph glyph(character);
            if (columns + glyph.columns > most) {
                break;
            }
            columns += glyph.columns;
            bytes.append(glyph.bytes.data(), glyph.size);
        }
    }

    std::string bytes;
    unsigned columns = 0;
};

}  // namespace

struct TerminalLine::System final {
    System() : descriptor(openTerminal()) {
        terminal = descriptor.get();
        eraseBeforeDeath();
    }
    ~System() {
        eraseTerminalLine();
        terminal = -1;
    }
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    const FileDescriptor descriptor;
    std::string shownBytes;
};

TerminalLine::TerminalLine()
    : system(isPersonAtTerminal() ? std::make_unique<System>() : nullptr) {}

TerminalLine::~TerminalLine() = default;

unsigned TerminalLine::columns() const noexcept {
    return system ? terminalColumns() : 0;
}

void TerminalLine::show(std::wstring_view text) {
    if (!system) {
        return;
    }
    const unsigned columns = terminalColumns();
    const FittedText fitted(text, columns);
    // Leave the cursor at the start of the line: the terminal's echo of a key, such as "^C", is
    // then erased with the line and does not wrap to the next.
    std::string bytes = "\r" + fitted.bytes;
    bytes.append(eraser(columns).substr(1)).append("\r");
    const unsigned before = shownColumns;
    if (before != 0 && bytes == system->shownBytes) {
        return;  // waking up the terminal costs most
    }
    shownColumns = std::max(before, fitted.columns);
    shownColumns = write(bytes, 0) ? fitted.columns : before;
    system->shownBytes = std::move(bytes);
}

bool isPersonAtTerminal() noexcept {
    const char* type = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && type != nullptr && *type != '\0' &&
           std::string_view(type) != "dumb";
}

void printOnTerminal(std::wstring_view text) {
    if (isPersonAtTerminal()) {
        eraseTerminalLine();
        const FittedText whole(text, std::numeric_limits<unsigned>::max());
        writeWithin(whole.bytes + "\n", kMillisecondsToPrint);
    }
}

void printLine(Stream stream, std::string_view line) noexcept {
    writeTo(stream, line);
}

void finishLines() noexcept {}  // they are written

void eraseTerminalLine() noexcept {
    if (shownColumns != 0) {
        const int error = errno;
        write(eraser(terminalColumns()), kMillisecondsToErase);
        shownColumns = 0;
        errno = error;
    }
}

}  // namespace tkcore
