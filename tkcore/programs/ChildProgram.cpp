#include "tkcore/programs/ChildProgram.h"

#include "tkcore/programs/PipeUtil.h"

namespace tkcore {

int ChildProgram::start(const std::vector<AString>& argv, const LongFileName& workingDirectory,
                        const std::string& title) {
    pipe.CreatePipe();  // after a failure the start fails
    ProgramRequest request(argv);
    request.workingDirectory = workingDirectory.FilePath();
    request.output = request.errors = pipe.writeHandle();
    request.title = title;
    return startProgram(request, handle);
}

ChildProgram::State ChildProgram::look() {
    if (handle == nullptr) {
        return State::kNone;
    }
    if (!hasNews) {
        return State::kRunning;
    }
    drainPipe(pipe.readHandle(), printed);
    if (VeltGetProcessExitCode(handle, code) == 0) {
        return State::kUnknown;
    }
    if (code == kStillRunning && !hasProcessEnded(handle)) {
        hasNews = !watched;
        return State::kRunning;
    }
    // Collect what it printed between the first look and its end.
    drainPipe(pipe.readHandle(), printed);
    return State::kEnded;
}

void ChildProgram::forget() noexcept {
    handle = nullptr;
    pipe.Close();
}

}  // namespace tkcore
