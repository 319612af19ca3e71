#pragma once

#include <string>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/programs/Pipe.h"
#include "tkcore/programs/Process.h"
#include "tkcore/programs/inside/PrintedText.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// One started program, the pipe it prints to and its output so far. Owns all three; the destructor
/// ends the program's tree if it still runs. Passive: callers call look() and, to wait for several
/// programs at once, add them to a ChildWatch.
class ChildProgram final {
public:
    enum class State { kNone, kRunning, kEnded, kUnknown };

    ChildProgram() = default;
    ~ChildProgram() { VeltTerminateProcessTree(handle); }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    /// Starts the program, argv[0], with both its outputs in the pipe. Returns 0 or the system's
    /// error code. See VeltCreateProcess. A keeper process shows the title.
    int start(const std::vector<AString>& argv, const LongFileName& workingDirectory,
              const std::string& title = {});

    /// Collects the output and returns the program's state: kNone before the start, kUnknown if the
    /// system does not know it. Costs nothing while a watch has no news of the program.
    State look();

    /// The exit code of an ended program; 128 + n if signal n ended it.
    [[nodiscard]] int exitCode() const noexcept { return code; }
    [[nodiscard]] const PrintedText& output() const noexcept { return printed; }
    [[nodiscard]] bool isStarted() const noexcept { return handle != nullptr; }

    /// Asks the tree to end and does not wait, so that several can end at the same time; see
    /// requestProcessTreeEnd.
    void requestEnd() const noexcept { requestProcessTreeEnd(handle); }

    /// Resets the object after the program has ended, to its state before the start.
    void forget() noexcept;

private:
    friend class ChildWatch;

    CPipe pipe;
    ProcessHandle handle = nullptr;
    int code = kStillRunning;
    PrintedText printed;
    bool watched = false;  // true: a watch reports news; false: every look asks the system
    bool hasNews = true;
};

}  // namespace tkcore
