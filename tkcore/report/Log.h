#pragma once

#include <functional>
#include <string_view>

#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// Whether the log is on and takes texts of this level: 0 failures, 1 and 2 traces.
///
/// The environment variable TKCORE_LOG with the value "LEVEL:FILE" turns the log on ("-" as FILE
/// is standard error). A value of another form, or a file that cannot be opened, leaves it off.
bool logTakes(int level);

/// Opens the log, but not at a path that the predicate picks: a slip in that variable must not
/// write into the design or an output. To be called before anything is logged.
void keepLogOff(std::function<bool(const LongFileName&)> isNoLog);

/// The listener is told every text of level 0, prefix included, whether there is a log or not.
using ReasonListener = std::function<void(std::string_view reason)>;
void listenToReasons(ReasonListener listener);

/// Whether the log is written where a person reads it.
bool isLogOnTerminal();

/// Why the log is off though the variable asks for it; empty if there is nothing to say.
AString doubtAboutLog();

/// Appends the text, narrow and of any bytes, to the log; the prefix leads its first line, the
/// seconds since the start lead every line.
void writeLog(int level, std::string_view prefix, std::string_view text);

/// Trace output; the format is that of AString::Format.
template <typename... Arguments>
void VelDebug(int level, const AString& format, const Arguments&... arguments) {
    if (logTakes(level)) {
        writeLog(level, {}, VEL_ANSI(AString::Format(format, arguments...)));
    }
}

/// Lets an exception that nobody catches end the process with its text in the log and without
/// a word on standard error.
void logUncaughtExceptions();

}  // namespace tkcore
