#include "process/ExtractaProcess.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

#include "tkcore/programs/ChildWatch.h"
#include "tkcore/programs/ProgramFailure.h"
#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/System.h"

namespace velextracta {

using tkcore::AString;
using tkcore::ChildProgram;
using tkcore::ExtractaParserException;
using tkcore::LongFileName;
using tkcore::VEL_ANSI;
using tkcore::VelDebug;

namespace {

AString quotedPath(const LongFileName& file) {
    return "\"" + file.FilePath() + "\"";
}

[[noreturn]] void throwStartFailure(const AString& executable, int result) {
    constexpr int kNoSuchFile = 2;
    tkcore::throwIfInterrupted();  // a signal makes a start fail
    const AString reason = tkcore::systemMessage(result);
    const AString obstacle = tkcore::obstacleToStart(VEL_ANSI(executable), result);
    VelDebug(0, "error: cannot start %s: %s%s%s", executable, reason, obstacle.empty() ? "" : ": ",
             obstacle);
    if (result == kNoSuchFile) {
        throw ExtractaParserException(
            "CreateProcess failed with error 2: Could not find application " + executable);
    }
    throw ExtractaParserException(
        AString::Format("CreateProcess failed with error %d: %s", result, reason));
}

[[noreturn]] void throwExitFailure(const AString& processName, int code,
                                   const tkcore::PrintedText& output) {
    if (const AString meaning = tkcore::meaningOfExitCode(code); !meaning.empty()) {
        VelDebug(0, "error: exit code %d means %s", code, meaning);
    }
    std::string message =
        VEL_ANSI(AString::Format("%s exited with non-zero exit code %d", processName, code));
    if (!output.empty()) {
        message += ": " + output.text();
    }
    throw ExtractaParserException(std::move(message));
}

/// The name of the control file, the second path on the command line. It distinguishes extractions
/// in a list of processes.
std::string titleOf(const std::vector<AString>& arguments) {
    const auto isPath = [](const AString& argument) { return argument.wide().starts_with(L'"'); };
    auto path = std::ranges::find_if(arguments, isPath);
    path = std::find_if(path == arguments.end() ? path : path + 1, arguments.end(), isPath);
    if (path == arguments.end()) {
        return {};
    }
    const std::wstring& text = path->wide();
    return VEL_ANSI(LongFileName(text.substr(1, text.size() - 2)).name());
}

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

void StartChildProcess(const AString& executable, const std::vector<AString>& arguments,
                       const LongFileName& workingDir, ChildProgram& child) {
    std::vector<AString> argv{executable};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    VelDebug(1, "*StartChildProcess: %s \n", commandLine(executable, arguments));
    if (const int result = child.start(argv, workingDir, titleOf(arguments)); result != 0) {
        VelDebug(1, "*StartChildProcess: VelCreateProcess result = %d \n", result);
        throwStartFailure(executable, result);
    }
}

bool ProcessRunning(ChildProgram& child, const AString& processName) {
    switch (child.look()) {
        case ChildProgram::State::kNone:
            return false;
        case ChildProgram::State::kRunning:
            return true;
        case ChildProgram::State::kEnded:
            if (child.exitCode() != 0) {
                throwExitFailure(processName, child.exitCode(), child.output());
            }
            return false;
        case ChildProgram::State::kUnknown:
        default:
            throw ExtractaParserException(
                AString::Format("ExtractaViewGenerator ProcessRunning check failed, "
                                "VeltGetProcessExitCode returned zero for %s process",
                                processName));
    }
}

void runAndWait(const AString& executable, const std::vector<AString>& arguments,
                const LongFileName& workingDir, RunObserver& observer) {
    ChildProgram child;
    StartChildProcess(executable, arguments, workingDir, child);
    tkcore::ChildWatch watch;
    watch.add(child);
    while (ProcessRunning(child, executable)) {
        tkcore::throwIfInterrupted();
        watch.wait(observer.restTime());
        observer.waiting();
    }
}

}  // namespace velextracta
