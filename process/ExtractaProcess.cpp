#include "process/ExtractaProcess.h"

#include <cstdlib>

#include "tkcore/Interruption.h"
#include "tkcore/Log.h"
#include "tkcore/PipeUtil.h"
#include "tkcore/System.h"
#include "views/ExtractaParserException.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::VelDebug;

namespace {

AString quotedPath(const LongFileName& file) {
    return "\"" + file.FilePath() + "\"";
}

[[noreturn]] void throwStartFailure(const AString& executable, int result) {
    constexpr int kNoSuchFile = 2;
    if (result == kNoSuchFile) {
        throw ExtractaParserException(
            "CreateProcess failed with error 2: Could not find application " + executable);
    }
    throw ExtractaParserException(AString::Format("CreateProcess failed with error %d: %s", result,
                                                  tkcore::systemMessage(result)));
}

/// A child whose tree does not outlive the scope.
class ScopedProcess final {
public:
    explicit ScopedProcess(tkcore::ProcessHandle process) : handle(process) {}
    ~ScopedProcess() { tkcore::VeltTerminateProcessTree(handle); }
    ScopedProcess(const ScopedProcess&) = delete;
    ScopedProcess& operator=(const ScopedProcess&) = delete;

    const tkcore::ProcessHandle handle;
};

}  // namespace

AString extractaExecutableName() {
    const char* override = std::getenv("VELTAR_EXTRACTA_PATHOVERRIDE");
    AString name = override == nullptr ? "extracta.exe" : override;
    VelDebug(2, "*ExtractaViewGenerator: extractaname %s\n", name);
    return name;
}

std::vector<AString> buildExtractaArguments(const LongFileName& designFile,
                                            const LongFileName& controlFile, bool generatorOption,
                                            const std::vector<LongFileName>& files) {
    std::vector<AString> arguments{"-k"};
    if (generatorOption) {
        arguments.emplace_back("-c");
    }
    arguments.emplace_back("-m");
    arguments.push_back(quotedPath(designFile));
    arguments.push_back(quotedPath(controlFile));
    for (const LongFileName& file : files) {
        arguments.push_back(quotedPath(file));
    }
    return arguments;
}

AString commandLine(const AString& executable, const std::vector<AString>& arguments) {
    AString line = executable;
    for (const AString& argument : arguments) {
        line += " " + argument;
    }
    return line;
}

tkcore::ProcessHandle StartChildProcess(const AString& executable,
                                        const std::vector<AString>& arguments,
                                        const LongFileName& workingDir,
                                        tkcore::PipeHandle pipeWriteEnd) {
    std::vector<AString> argv{executable};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    VelDebug(1, "*StartChildProcess: %s \n", commandLine(executable, arguments));
    tkcore::ProcessHandle handle = nullptr;
    const int result = tkcore::VeltCreateProcess(
        AString(), argv.data(), static_cast<int>(argv.size()), handle, workingDir.FilePath(),
        nullptr, nullptr, pipeWriteEnd, 0, false, true, true, 0);
    if (result != 0) {
        VelDebug(1, "*StartChildProcess: VelCreateProcess result = %d \n", result);
        throwStartFailure(executable, result);
    }
    return handle;
}

bool ProcessRunning(tkcore::ProcessHandle handle, const AString& processName,
                    tkcore::PipeHandle readEnd, AString& output) {
    if (handle == nullptr) {
        return false;
    }
    if (readEnd != nullptr) {
        tkcore::drainPipe(readEnd, output);
    }
    int code = 0;
    if (tkcore::VeltGetProcessExitCode(handle, code) == 0) {
        throw ExtractaParserException(
            AString::Format("ExtractaViewGenerator ProcessRunning check failed, "
                            "VeltGetProcessExitCode returned zero for %s process",
                            processName));
    }
    if (code == tkcore::kStillRunning) {
        return true;
    }
    if (code == 0) {
        return false;
    }
    AString message = AString::Format("%s exited with non-zero exit code %d", processName, code);
    if (readEnd != nullptr) {
        tkcore::drainPipe(readEnd, output);
        if (!output.empty()) {
            message += ": ";
            message += output;
        }
    }
    throw ExtractaParserException(message);
}

void throwIfInterrupted() {
    if (const int signal = tkcore::interruption(); signal != 0) {
        throw ExtractaParserException(AString::Format("interrupted by signal %d", signal));
    }
}

void runAndWait(const AString& executable, const std::vector<AString>& arguments,
                const LongFileName& workingDir) {
    tkcore::CPipe pipe;
    pipe.CreatePipe();
    AString output;
    const ScopedProcess child(
        StartChildProcess(executable, arguments, workingDir, pipe.writeHandle()));
    while (ProcessRunning(child.handle, executable, pipe.readHandle(), output)) {
        throwIfInterrupted();
        tkcore::sleepMilliseconds(1);
    }
}

}  // namespace velextracta
