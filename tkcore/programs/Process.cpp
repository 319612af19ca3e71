#include "tkcore/programs/Process.h"

#include <span>

#include "tkcore/programs/inside/ProgramArguments.h"
#include "tkcore/programs/inside/ProgramEnd.h"

namespace tkcore {

ProgramRequest::ProgramRequest(const std::vector<AString>& argv)
    : program(argv.empty() ? "" : plainArguments(std::span(argv).first(1)).front()),
      arguments(plainArguments(argv)) {}

int VeltCreateProcess(const AString& applicationName, const AString* argv, int argc,
                      ProcessHandle& process, const AString& workingDirectory,
                      const void* /*processSecurity*/, const void* /*threadSecurity*/,
                      PipeHandle output, unsigned creationFlags, bool showWindow,
                      bool captureOutput, bool captureErrors, int /*priority*/) {
    ProgramRequest request({argv, argv + argc});
    if (!applicationName.empty()) {
        request.program = VEL_ANSI(applicationName);
    }
    request.workingDirectory = workingDirectory;
    request.output = captureOutput ? output : nullptr;
    request.errors = captureErrors ? output : nullptr;
    request.creationFlags = creationFlags;
    request.showWindow = showWindow;
    return startProgram(request, process);
}

int VeltGetProcessExitCode(ProcessHandle process, int& exitCode) {
    if (!lookForEnd(*process)) {
        return 0;
    }
    exitCode = notedExitCode(*process).value_or(kStillRunning);
    return 1;
}

bool hasProcessEnded(ProcessHandle process) noexcept {
    return notedExitCode(*process).has_value();
}

}  // namespace tkcore
