#pragma once

#include <vector>

#include "tkcore/AString.h"
#include "tkcore/LongFileName.h"
#include "tkcore/Pipe.h"
#include "tkcore/Process.h"

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

/// Starts a program in the working directory, both its outputs in the pipe.
tkcore::ProcessHandle StartChildProcess(const tkcore::AString& executable,
                                        const std::vector<tkcore::AString>& arguments,
                                        const tkcore::LongFileName& workingDir,
                                        tkcore::PipeHandle pipeWriteEnd);

/// Collects what the program has printed (readEnd null: nothing) and tells whether it still runs;
/// false for a null handle. An exit code other than 0 is thrown, with all of the output.
bool ProcessRunning(tkcore::ProcessHandle handle, const tkcore::AString& processName,
                    tkcore::PipeHandle readEnd, tkcore::AString& output);

/// Throws once a request to end the run has been noted.
void throwIfInterrupted();

/// Runs a program to its end.
void runAndWait(const tkcore::AString& executable, const std::vector<tkcore::AString>& arguments,
                const tkcore::LongFileName& workingDir);

}  // namespace velextracta
