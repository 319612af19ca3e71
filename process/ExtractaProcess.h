#pragma once

#include <vector>

#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/programs/ChildProgram.h"
#include "tkcore/text/AString.h"

// Calls extracta and judges how it ended, for the generators and for a run with one extracta. Every
// failure is an ExtractaParserException.

namespace velextracta {

/// The name by which extracta is started: "extracta.exe", or the whole value of the environment
/// variable VELTAR_EXTRACTA_PATHOVERRIDE.
tkcore::AString extractaExecutableName();

/// Arguments of an extracta run after the program's name. The files are the outputs, one for each
/// view block of the control file.
std::vector<tkcore::AString> buildExtractaArguments(const tkcore::LongFileName& designFile,
                                                    const tkcore::LongFileName& controlFile,
                                                    bool generatorOption,
                                                    const std::vector<tkcore::LongFileName>& files);

/// Program and arguments as one line, for the log.
tkcore::AString commandLine(const tkcore::AString& executable,
                            const std::vector<tkcore::AString>& arguments);

/// Starts a program in the working directory. Refuses to start this program itself, which would
/// start itself without end.
void StartChildProcess(const tkcore::AString& executable,
                       const std::vector<tkcore::AString>& arguments,
                       const tkcore::LongFileName& workingDir, tkcore::ChildProgram& child);

/// Collects the program's output and returns whether it still runs; false if it was never started.
/// Throws, with all of the output, if its exit code is not 0.
bool ProcessRunning(tkcore::ChildProgram& child, const tkcore::AString& processName);

/// Runs a program to its end and reports the waiting to the observer. Throws tkcore::Interrupted,
/// too.
void runAndWait(const tkcore::AString& executable, const std::vector<tkcore::AString>& arguments,
                const tkcore::LongFileName& workingDir, RunObserver& observer);

}  // namespace velextracta
