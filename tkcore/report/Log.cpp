#include "tkcore/report/Log.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "tkcore/files/OutputFile.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/report/Terminal.h"
#include "tkcore/system/Stream.h"
#include "tkcore/system/System.h"

namespace tkcore {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostInOneWrite = 65536;

const Clock::time_point kStart = Clock::now();

std::function<bool(const LongFileName&)>& noLog() {
    static std::function<bool(const LongFileName&)> predicate;
    return predicate;
}

/// The log as TKCORE_LOG describes it. The variable is read once.
class Log final {
public:
    Log() {
        const char* variable = std::getenv("TKCORE_LOG");
        const std::string_view setting = variable == nullptr ? "" : variable;
        if (setting.empty()) {
            return;
        }
        const std::size_t colon = std::min(setting.find(':'), setting.size());
        const char* end = setting.data() + colon;
        int wantedLevel = 0;
        const auto [position, error] = std::from_chars(setting.data(), end, wantedLevel);
        if (error != std::errc() || position != end || colon == setting.size()) {
            reasonWhyOff = "TKCORE_LOG is not of the form LEVEL:FILE: " + AString(setting);
            return;
        }
        open(AString(setting.substr(colon + 1)));
        level = reasonWhyOff.empty() ? wantedLevel : level;
    }

    const AString& doubt() const { return reasonWhyOff; }
    bool isOnTerminal() const { return level >= 0 && mayBeTerminal; }
    bool takes(int textLevel) const { return textLevel <= level; }

    void write(std::string_view prefix, std::string_view text) {
        if (mayBeTerminal) {
            eraseTerminalLine();
        }
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
            text.remove_suffix(1);
        }
        const std::chrono::duration<double> elapsed = Clock::now() - kStart;
        char stamp[32];
        const int length = std::snprintf(stamp, sizeof stamp, "%.6f ", elapsed.count());
        // Each write has whole lines, so that lines of two runs with one log file do not mix. The
        // text may be the whole output of an extractor, so it is not copied as a whole.
        std::string lines;
        for (std::size_t start = 0; start <= text.size();) {
            const std::size_t end = std::min(text.find('\n', start), text.size());
            lines.append(stamp, static_cast<std::size_t>(length)).append(prefix);
            lines.append(text.substr(start, end - start)).push_back('\n');
            prefix = {};
            start = end + 1;
            if (lines.size() >= kMostInOneWrite || start > text.size()) {
                put(lines);
                lines.clear();
            }
        }
    }

private:
    void open(const AString& name) {
        if (name == "-") {
            return;
        }
        const LongFileName path = userPath(name);
        if (noLog() && noLog()(path)) {
            reasonWhyOff = "TKCORE_LOG names a file that is no log: " + name;
            return;
        }
        try {
            file.emplace(path, OutputFile::IfThere::kAppend);
            mayBeTerminal = statusOf(path).kind != PathStatus::Kind::kFile;
        } catch (const std::system_error& error) {
            reasonWhyOff = AString("there is no log: ").append(error.what());
        }
    }

    void put(const std::string& lines) {
        try {
            if (file) {
                file->write(lines);
            } else {
                writeTo(Stream::kErrors, lines);
            }
        } catch (const std::system_error&) {
            return;  // there is no other place to report it
        }
    }

    std::optional<OutputFile> file;  // none: standard error
    int level = -1;
    bool mayBeTerminal = true;
    AString reasonWhyOff;
};

ReasonListener& reasonListener() {
    static ReasonListener listener;
    return listener;
}

Log& theLog() {
    static Log log;
    return log;
}

void endQuietly() {
    try {
        if (std::current_exception()) {
            throw;  // to look at it without a copy, which needs memory
        }
    } catch (const std::exception& exception) {
        VelDebug(0, "uncaught exception: %s", exception.what());
    } catch (...) {
        VelDebug(0, "uncaught exception of an unknown type");
    }
    eraseTerminalLine();
    endAbnormally();
}

}  // namespace

bool logTakes(int level) {
    return theLog().takes(level) || (level == 0 && reasonListener());
}

void writeLog(int level, std::string_view prefix, std::string_view text) noexcept {
    try {
        if (theLog().takes(level)) {
            theLog().write(prefix, text);
        }
        if (level == 0 && reasonListener()) {
            reasonListener()(std::string(prefix).append(text));
        }
    } catch (const std::bad_alloc&) {
        return;  // destructors log, too
    }
}

void listenToReasons(ReasonListener listener) {
    reasonListener() = std::move(listener);
}

bool isLogOnTerminal() {
    return theLog().isOnTerminal();
}

void keepLogOff(std::function<bool(const LongFileName&)> isNoLog) {
    noLog() = std::move(isNoLog);
    theLog();
    noLog() = nullptr;
}

AString doubtAboutLog() {
    return theLog().doubt();
}

void logUncaughtExceptions() {
    std::set_terminate(endQuietly);
}

}  // namespace tkcore
