#include "tkcore/programs/ProgramFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>

#include <sys/statvfs.h>
#include <unistd.h>

#include "tkcore/files/InputFile.h"
#include "tkcore/files/PathStatus.h"

namespace tkcore {

namespace {

struct SignalMeaning final {
    int signal;
    std::string_view text;
};

constexpr std::array kSignals{
    SignalMeaning{SIGHUP, "SIGHUP, the end of its terminal"},
    SignalMeaning{SIGINT, "SIGINT, an interruption"},
    SignalMeaning{SIGQUIT, "SIGQUIT, sent by somebody"},
    SignalMeaning{SIGILL, "SIGILL, an instruction that this processor does not have"},
    SignalMeaning{SIGABRT, "SIGABRT: it gave up"},
    SignalMeaning{SIGBUS, "SIGBUS, an access to memory that is not there"},
    SignalMeaning{SIGFPE, "SIGFPE, a division by zero or the like"},
    SignalMeaning{SIGKILL, "SIGKILL, sent by somebody, or by the system when memory ran out"},
    SignalMeaning{SIGSEGV, "SIGSEGV, an access to memory that is not its own"},
    SignalMeaning{SIGPIPE, "SIGPIPE: nobody reads what it writes"},
    SignalMeaning{SIGTERM, "SIGTERM, a request to end"},
    SignalMeaning{SIGXCPU, "SIGXCPU, the limit on processor time"},
    SignalMeaning{SIGXFSZ, "SIGXFSZ, the limit on the size of files"},
    SignalMeaning{SIGSYS, "SIGSYS, a system call that is not allowed here"},
};

/// The interpreter that the first line of a script names; empty if there is none.
std::string interpreterOf(const LongFileName& file) {
    constexpr std::string_view kBlanks = " \t";
    std::array<char, 256> head{};
    std::string_view line;
    try {
        InputFile opened(file);
        line = std::string_view(head.data(), opened.read(head.data(), head.size()));
    } catch (const std::system_error&) {
        return {};
    }
    line = line.substr(0, line.find('\n'));
    if (!line.starts_with("#!")) {
        return {};
    }
    line.remove_prefix(std::min(line.size(), line.find_first_not_of(kBlanks, 2)));
    return std::string(line.substr(0, line.find_first_of(kBlanks)));
}

AString whyNotFound(const LongFileName& file) {
    if (isThere(file)) {
        const std::string interpreter = interpreterOf(file);
        return interpreter.empty()
                   ? "what the system would load it with is not there"
                   : "its first line names " + AString(interpreter) + ", which cannot be started";
    }
    LongFileName missing = file;
    while (!isThere(missing.folder())) {
        missing = missing.folder();
    }
    return "there is no " + missing.FilePath();
}

AString whyNotAllowed(const LongFileName& file) {
    struct statvfs disk {};
    if (statvfs(VEL_ANSI(file).c_str(), &disk) == 0 && (disk.f_flag & ST_NOEXEC) != 0) {
        return "no program may be started from its disk (noexec)";
    }
    if (statusOf(file).kind != PathStatus::Kind::kFile) {
        return "it is no file";
    }
    return euidaccess(VEL_ANSI(file).c_str(), X_OK) != 0
               ? "it may not be executed"
               : "its working directory, or what its first line names, may not be used";
}

}  // namespace

AString meaningOfExitCode(int code) {
    constexpr int kSignalBase = 128;
    constexpr int kShellCannotStart = 126;
    constexpr int kShellCannotFind = 127;
    if (code == kShellCannotStart || code == kShellCannotFind) {
        return code == kShellCannotStart ? "that a script could not start a program"
                                         : "that a script could not find a program";
    }
    const auto* found = std::ranges::find(kSignals, code - kSignalBase, &SignalMeaning::signal);
    return found == kSignals.end() ? AString() : "an end by " + AString(found->text);
}

AString obstacleToStart(const std::string& name, int error) {
    const LongFileName file{AString(name)};
    if (name.find('/') == std::string::npos) {
        return error == ENOENT ? "no folder of PATH holds it" : AString();
    }
    switch (error) {
        case ENOENT:
            return whyNotFound(file);
        case EACCES:
            return whyNotAllowed(file);
        case ENOEXEC:
            return "it is no program of this system; a script must begin with #!";
        default:
            return {};
    }
}

}  // namespace tkcore
