#include "process/ExtractaViewGenerator.h"

#include <algorithm>
#include <sstream>
#include <system_error>

#include "process/ExtractaProcess.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/report/Log.h"
#include "views/ExtractaViewControl.h"

namespace velextracta {

using tkcore::AString;
using tkcore::ExtractaParserException;
using tkcore::LongFileName;
using tkcore::VelDebug;

AString sanitisedName(const AString& name) {
    const auto isKept = [](wchar_t character) {
        return (character >= L'a' && character <= L'z') ||
               (character >= L'A' && character <= L'Z') ||
               (character >= L'0' && character <= L'9') || character == L'-' || character == L'_';
    };
    // If wide characters have 16 bits, a pair of them may be one character and becomes one "_".
    const auto isPair = [](wchar_t first, wchar_t second) {
        return first >= 0xD800 && first < 0xDC00 && second >= 0xDC00 && second < 0xE000;
    };
    std::wstring text;
    wchar_t before = 0;
    for (const wchar_t character : name.wide()) {
        if (!isPair(before, character)) {
            text.push_back(isKept(character) ? character : L'_');
        }
        before = character;
    }
    return text;
}

std::uint32_t concurrentExtractaLimit(unsigned hardwareThreads) {
    return std::max(hardwareThreads / 2, 1U);
}

std::uint32_t ExtractaViewGenerator::maxConcurrentExtractas = concurrentExtractaLimit();
GeneratorPool ExtractaViewGenerator::pool(maxConcurrentExtractas);

ExtractaViewGenerator::ExtractaViewGenerator(const LongFileName& designFile,
                                             const ExtractaViewDef& viewDef,
                                             const LongFileName& workingDirectory,
                                             bool generatorOption, const AString& givenName)
    : viewType(viewDef.viewType), name(sanitisedName(givenName)), workingDir(workingDirectory) {
    const LongFileName controlFile = workingDir.in(makeControlFileName(viewType, name));
    writeControlFile(viewDef, controlFile);
    outputFile = workingDir.in(MakeViewFileName(viewType, name));
    arguments = buildExtractaArguments(designFile, controlFile, generatorOption, {outputFile});
    pool.startOrQueue(*this);
}

ExtractaViewGenerator::~ExtractaViewGenerator() {
    if (child.isStarted()) {
        tkcore::writeLog(1, {}, "*ExtractaViewGenerator destructor: VeltTerminateProcessTree");
    }
}

ActiveView ExtractaViewGenerator::waitForViewFile() {
    while (pool.isQueued(*this) || checkFinished()) {
        pool.pollProcesses();
        pool.wait();
    }
    return {viewType, outputFile.FilePath()};
}

void ExtractaViewGenerator::pollProcesses() {
    pool.refresh();  // no wait asks for news meanwhile
    pool.pollProcesses();
}

std::uint64_t ExtractaViewGenerator::finishedSize() const {
    const bool isFinished = !pool.isQueued(*this) && !child.isStarted();
    return isFinished ? tkcore::fileSize(outputFile) : 0;
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
               buildExtractaArguments(designFile, controlFile, generatorOption, files), workingDir,
               pool.observer());
}

void ExtractaViewGenerator::writeControlFile(const ExtractaViewDef& viewDef,
                                             const LongFileName& controlFile) const {
    std::ostringstream text;
    WriteViewBlock(viewDef, text);
    try {
        saveControlFile(text, controlFile);
    } catch (const std::system_error& error) {
        tkcore::writeLog(0, "error: ", error.what());
        throw ExtractaParserException("ExtractaViewGenerator failed to write file " +
                                      workingDir.FilePath());
    }
}

void ExtractaViewGenerator::startExtracta() {
    StartChildProcess(extractaExecutableName(), arguments, workingDir, child);
}

bool ExtractaViewGenerator::checkFinished() {
    // Static, because this runs for every child in every pass.
    static const AString kProcessName("extracta");
    bool running = false;
    try {
        running = ProcessRunning(child, kProcessName);
    } catch (const ExtractaParserException&) {
        // The message names no view, so log it: there are many children.
        VelDebug(0, "error: extraction of %s failed: %s \n", viewName(),
                 commandLine(extractaExecutableName(), arguments));
        throw;
    }
    if (!running && child.isStarted()) {
        VelDebug(1, "Extracta %s%s finished \n", ViewTypeName(viewType), name);
        pool.leave(*this);
        child.forget();
        pool.observer().extractionFinished(viewName());
    }
    return running;
}

}  // namespace velextracta
