#pragma once

#include <functional>
#include <string_view>

#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// Whether the log is on and takes texts of this level: 0 for failures, 1 and 2 for traces.
///
/// The environment variable TKCORE_LOG with the value "LEVEL:FILE" turns the log on ("-" as FILE
/// is standard error). A value of another form, or a file that cannot be opened, leaves it off.
bool logTakes(int level);

/// Opens the log, but not at a path for which the predicate holds: a wrong path in TKCORE_LOG must
/// not write into the design or an output. To be called before anything is logged.
void keepLogOff(std::function<bool(const LongFileName&)> isNoLog);

/// The listener gets every text of level 0, with its prefix, even if the log is off.
using ReasonListener = std::function<void(std::string_view reason)>;
void listenToReasons(ReasonListener listener);

/// Whether the log may go to a terminal.
bool isLogOnTerminal();

/// Why the log is off although the variable asks for it; empty if it is not so.
AString doubtAboutLog();

/// Appends the text, narrow and of any bytes, to the log. Its first line begins with the prefix,
/// every line with the seconds since the start. Without memory the text is lost.
void writeLog(int level, std::string_view prefix, std::string_view text) noexcept;

/// Trace output; the format is that of AString::Format.
template <typename... Arguments>
void VelDebug(int level, const AString& format, const Arguments&... arguments) {
    if (logTakes(level)) {
        writeLog(level, {}, VEL_ANSI(AString::Format(format, arguments...)));
    }
}

/// Logs a doubt about the success of a run, at the level of failures.
inline void warn(const AString& text) {
    writeLog(0, "warning: ", VEL_ANSI(text));
}

/// From here on an uncaught exception ends the process with its text in the log and nothing on
/// standard error.
void logUncaughtExceptions();

}  // namespace tkcore
