#pragma once

#include <vector>

#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/programs/ChildProgram.h"
#include "tkcore/text/AString.h"

// How extracta is called and what its end means. Used by the generators, and by whoever runs one
// extracta alone; every failure is an ExtractaParserException.

namespace velextracta {

/// The name that extracta is started by: "extracta.exe", or the whole value of the environment
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

/// Starts a program in the working directory. Refuses to if it is this program itself, which would
/// start itself again, and so on.
void StartChildProcess(const tkcore::AString& executable,
                       const std::vector<tkcore::AString>& arguments,
                       const tkcore::LongFileName& workingDir, tkcore::ChildProgram& child);

/// Collects what the program has printed and tells whether it still runs; false for one that was
/// never started. An exit code other than 0 is thrown, with all that it has printed.
bool ProcessRunning(tkcore::ChildProgram& child, const tkcore::AString& processName);

/// Runs a program to its end; the observer is told that time passes. Throws tkcore::Interrupted,
/// too.
void runAndWait(const tkcore::AString& executable, const std::vector<tkcore::AString>& arguments,
                const tkcore::LongFileName& workingDir, RunObserver& observer);

}  // namespace velextracta
