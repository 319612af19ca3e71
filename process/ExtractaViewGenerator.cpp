#include "process/ExtractaViewGenerator.h"

#include <algorithm>
#include <fstream>
#include <functional>

#include "process/ExtractaProcess.h"
#include "tkcore/Log.h"
#include "views/ExtractaParserException.h"
#include "views/ExtractaViewControl.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::VelDebug;

namespace {

AString sanitisedName(const AString& name) {
    const auto isKept = [](wchar_t character) {
        return (character >= L'a' && character <= L'z') ||
               (character >= L'A' && character <= L'Z') ||
               (character >= L'0' && character <= L'9') || character == L'-' || character == L'_';
    };
    std::wstring text = name.wide();
    std::ranges::replace_if(text, std::not_fn(isKept), L'_');
    return text;
}

}  // namespace

std::uint32_t concurrentExtractaLimit(unsigned hardwareThreads) {
    return std::max(hardwareThreads / 2, 1U);
}

std::uint32_t ExtractaViewGenerator::maxConcurrentExtractas = concurrentExtractaLimit();
std::deque<ExtractaViewGenerator*> ExtractaViewGenerator::waitingGenerators;
std::deque<ExtractaViewGenerator*> ExtractaViewGenerator::runningGenerators;

ExtractaViewGenerator::ExtractaViewGenerator(const LongFileName& designFile,
                                             const ExtractaViewDef& viewDef,
                                             const LongFileName& workingDirectory,
                                             bool generatorOption, const AString& givenName)
    : viewType(viewDef.viewType), name(sanitisedName(givenName)), workingDir(workingDirectory) {
    const LongFileName controlFile(workingDir.FilePath() + "extracta_control_" +
                                   ViewTypeName(viewType) + name + ".txt");
    writeControlFile(viewDef, controlFile);
    outputFile = LongFileName(workingDir.FilePath() + MakeViewFileName(viewType, name));
    arguments = buildExtractaArguments(designFile, controlFile, generatorOption, {outputFile});
    startOrQueue();
}

ExtractaViewGenerator::~ExtractaViewGenerator() {
    if (processHandle != nullptr) {
        VelDebug(1, "*ExtractaViewGenerator destructor: VeltTerminateProcessTree\n");
        tkcore::VeltTerminateProcessTree(processHandle);
    }
    leaveQueues();
}

ActiveView ExtractaViewGenerator::waitForViewFile() {
    while (isQueued() || checkFinished()) {
        pollProcesses();
        tkcore::sleepMilliseconds(1);
    }
    return {viewType, outputFile.FilePath()};
}

void ExtractaViewGenerator::runExtracta(const LongFileName& designFile,
                                        const LongFileName& controlFile, bool generatorOption,
                                        const std::vector<ActiveView>& views,
                                        const LongFileName& workingDir) {
    std::vector<LongFileName> files;
    files.reserve(views.size());
    for (const ActiveView& view : views) {
        files.emplace_back(view.path);
    }
    runAndWait(extractaExecutableName(),
               buildExtractaArguments(designFile, controlFile, generatorOption, files), workingDir);
}

void ExtractaViewGenerator::writeControlFile(const ExtractaViewDef& viewDef,
                                             const LongFileName& controlFile) const {
    std::ofstream stream = OpenControlFile(controlFile);
    WriteViewBlock(viewDef, stream);
    // Flushed before the look at its state: a full disk shows only when the bytes go out.
    if (!stream.flush().good()) {
        throw ExtractaParserException("ExtractaViewGenerator failed to write file " +
                                      workingDir.FilePath());
    }
}

void ExtractaViewGenerator::startOrQueue() {
    if (runningGenerators.size() >= maxConcurrentExtractas) {
        waitingGenerators.push_back(this);
        return;
    }
    std::erase(waitingGenerators, this);
    // Not before it is needed: hundreds of queued generators hold no descriptors.
    pipe.CreatePipe();
    processHandle =
        StartChildProcess(extractaExecutableName(), arguments, workingDir, pipe.writeHandle());
    runningGenerators.push_back(this);
}

bool ExtractaViewGenerator::checkFinished() {
    // Made once: this runs for every child in every pass.
    static const AString kProcessName("extracta");
    bool running = false;
    try {
        running = ProcessRunning(processHandle, kProcessName, pipe.readHandle(), output);
    } catch (const ExtractaParserException&) {
        // The message names no view; with many children the log must.
        VelDebug(1, "Extracta %s%s failed: %s \n", ViewTypeName(viewType), name,
                 commandLine(extractaExecutableName(), arguments));
        throw;
    }
    if (!running && processHandle != nullptr) {
        VelDebug(1, "Extracta %s%s finished \n", ViewTypeName(viewType), name);
        processHandle = nullptr;
        pipe.Close();
        std::erase(runningGenerators, this);
    }
    return running;
}

bool ExtractaViewGenerator::isQueued() const {
    return std::ranges::find(waitingGenerators, this) != waitingGenerators.end();
}

void ExtractaViewGenerator::leaveQueues() {
    std::erase(waitingGenerators, this);
    std::erase(runningGenerators, this);
}

void ExtractaViewGenerator::pollProcesses() {
    throwIfInterrupted();
    // A copy: reaping takes generators out of the queue.
    const auto running = runningGenerators;
    for (ExtractaViewGenerator* generator : running) {
        generator->checkFinished();
    }
    while (!waitingGenerators.empty() && runningGenerators.size() < maxConcurrentExtractas) {
        waitingGenerators.front()->startOrQueue();
    }
}

}  // namespace velextracta
