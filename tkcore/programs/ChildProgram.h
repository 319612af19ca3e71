#pragma once

#include <string>
#include <vector>

#include "tkcore/files/LongFileName.h"
#include "tkcore/programs/Pipe.h"
#include "tkcore/programs/Process.h"
#include "tkcore/programs/inside/PrintedText.h"
#include "tkcore/text/AString.h"

namespace tkcore {

/// One started program with the pipe it prints to and all that it has printed so far; owns both,
/// and ends the program's tree when destroyed while it runs. Passive: whoever waits for it calls
/// look() and, to wait for several at once, gives it to a ChildWatch.
class ChildProgram final {
public:
    enum class State { kNone, kRunning, kEnded, kUnknown };

    ChildProgram() = default;
    ~ChildProgram() { VeltTerminateProcessTree(handle); }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    /// Starts the program, argv[0], with both its outputs in the pipe; returns 0, or the system's
    /// error code. See VeltCreateProcess. A process that looks after it may show the title.
    int start(const std::vector<AString>& argv, const LongFileName& workingDirectory,
              const std::string& title = {});

    /// Collects what has been printed and tells how it stands: kNone before the start, kUnknown
    /// when the system cannot say. Costs nothing while a watch has no news of the program.
    State look();

    /// Once it has ended; 128 + n if signal n ended it.
    [[nodiscard]] int exitCode() const noexcept { return code; }
    [[nodiscard]] const PrintedText& output() const noexcept { return printed; }
    [[nodiscard]] bool isStarted() const noexcept { return handle != nullptr; }

    /// Asks the tree politely to end, so that several end at the same time; see
    /// requestProcessTreeEnd.
    void requestEnd() const noexcept { requestProcessTreeEnd(handle); }

    /// Lets go of a program that has ended: as before the start.
    void forget() noexcept;

private:
    friend class ChildWatch;

    CPipe pipe;
    ProcessHandle handle = nullptr;
    int code = kStillRunning;
    PrintedText printed;
    bool watched = false;  // a watch tells when there is news; else every look asks the system
    bool hasNews = true;
};

}  // namespace tkcore
