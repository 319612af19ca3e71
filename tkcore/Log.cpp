#include "tkcore/Log.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <boost/filesystem.hpp>

#include "tkcore/OutputFile.h"
#include "tkcore/Path.h"
#include "tkcore/System.h"
#include "tkcore/Terminal.h"

namespace tkcore {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostInOneWrite = 65536;

const Clock::time_point kStart = Clock::now();

/// The log as TKCORE_LOG asks for it, read once.
class Log final {
public:
    Log() {
        const char* variable = std::getenv("TKCORE_LOG");
        const std::string_view setting = variable == nullptr ? "" : variable;
        const std::size_t colon = setting.find(':');
        if (colon == std::string_view::npos) {
            return;
        }
        int wantedLevel = 0;
        const char* end = setting.data() + colon;
        const auto [position, error] = std::from_chars(setting.data(), end, wantedLevel);
        if (error != std::errc() || position != end) {
            return;
        }
        const std::string path(setting.substr(colon + 1));
        try {
            if (path != "-") {
                file.emplace(path, OutputFile::IfThere::kAppend);
                boost::system::error_code unknown;
                mayBeTerminal = !boost::filesystem::is_regular_file(toPath(path), unknown);
            }
            level = wantedLevel;
        } catch (const std::system_error&) {
            return;  // off, then
        }
    }

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
        // Whole lines in one write keep those of two runs with one log file apart. The text may be
        // all that an extractor has printed: it is not held a second time.
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
    void put(const std::string& lines) {
        try {
            if (file) {
                file->write(lines);
            } else {
                std::cerr << lines << std::flush;
            }
        } catch (const std::system_error&) {
            return;  // there is nowhere to tell it
        }
    }

    std::optional<OutputFile> file;  // else standard error
    int level = -1;
    bool mayBeTerminal = true;
};

Log& theLog() {
    static Log log;
    return log;
}

void endQuietly() {
    try {
        if (const auto exception = std::current_exception()) {
            std::rethrow_exception(exception);
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
    return theLog().takes(level);
}

void writeLog(int level, std::string_view prefix, std::string_view text) {
    if (logTakes(level)) {
        theLog().write(prefix, text);
    }
}

void logUncaughtExceptions() {
    std::set_terminate(endQuietly);
}

}  // namespace tkcore
