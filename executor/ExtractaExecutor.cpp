#include "executor/ExtractaExecutor.h"

#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "archive/CZipArchive.h"
#include "executor/inside/Packaging.h"
#include "executor/inside/ParallelRun.h"
#include "executor/inside/Warnings.h"
#include "process/ExtractaViewGenerator.h"
#include "tkcore/files/FileCopy.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/report/Assertion.h"
#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/report/Log.h"
#include "tkcore/system/Interruption.h"
#include "views/ExtractaViewControl.h"

namespace velextracta {

using tkcore::AString;
using tkcore::isDirectory;
using tkcore::LongFileName;
using tkcore::VEL_ANSI;

namespace {

constexpr char kSource[] = "ExtractaExecutor";
constexpr unsigned long kReadBufferSize = 65536;

/// Logs the reason of a failed packaging; the assertion shows only where it failed.
void logReason(const std::exception& exception) {
    tkcore::writeLog(0, "error: ", exception.what());
}

std::uint64_t totalSize(const std::vector<LongFileName>& files) {
    return std::accumulate(
        files.begin(), files.end(), std::uint64_t{0},
        [](std::uint64_t sum, const LongFileName& file) { return sum + tkcore::fileSize(file); });
}

void pack(const std::vector<LongFileName>& files, CZipArchive& archive, RunObserver& observer) {
    const std::uint64_t all = totalSize(files);
    std::uint64_t packed = 0;
    archive.reportProgressTo([&](std::uint64_t bytes) { observer.packed(packed += bytes, all); });
    archive.reportDoubtsTo([&](const std::string& doubt) { tkcore::warn(doubt); });
    for (const LongFileName& file : files) {
        archive.AddNewFile(file, CZipArchive::kDefaultLevel, true, CZipArchive::kSafeSmartness,
                           kReadBufferSize);
    }
}

void requirePath(const LongFileName& path, const AString& text) {
    if (text.empty()) {
        throw std::runtime_error("the output path is empty");
    }
    if (!path.IsInitialized()) {
        throw std::runtime_error("the output path " + VEL_ANSI(text) +
                                 " is relative, and the current directory is not there any more");
    }
}

}  // namespace

ExtractaExecutor::~ExtractaExecutor() {
    if (std::getenv("VELTAR_EXTRACTA_DEBUG") == nullptr) {
        deleteWorkingDir();
    }
}

bool ExtractaExecutor::createWorkingDir(const AString& base) {
    LongFileName baseDirectory(base);
    baseDirectory.MakeItDirectory();
    if (!baseDirectory.IsDirectory()) {
        VEL_ASSERT(kSource, !"APDLinkServer::createWorkingDir, can't find workingdirpath");
        return fail(AString::Format("Could not find working directory at \"%s\"", base));
    }
    const std::int32_t number = runNumber();
    deleteWorkingDir();
    if (!workingDir.create(baseDirectory, number)) {
        VEL_ASSERT(kSource,
                   !"APDLinkServer::createExtractaViews, could not create working directory");
        return fail(AString::Format("Could not create working directory at \"%s\"",
                                    workingDir.name().FilePath()));
    }
    return true;
}

bool ExtractaExecutor::deleteWorkingDir() {
    if (workingDir.remove()) {
        return true;
    }
    VEL_ASSERT(kSource, !"APDLinkServer::deleteWorkingDir, failed");
    return false;
}

bool ExtractaExecutor::createExtractaViews(const AString& designFile, const AString& base,
                                           const ViewSet& views, const std::vector<AString>& nets,
                                           std::vector<ActiveView>& activeViews) {
    if (!createWorkingDir(base)) {
        return false;
    }
    design = tkcore::userPath(designFile);
    const auto reporting = ExtractaViewGenerator::reportTo(observer);
    warnAboutNames(nets);
    return views.Contains(ViewType::conn)
               ? createExtractaControlFileAndViewsMP(designFile, views, nets, activeViews)
               : createViewsWithOneProcess(views, nets, activeViews);
}

bool ExtractaExecutor::createViewsWithOneProcess(const ViewSet& views,
                                                 const std::vector<AString>& nets,
                                                 std::vector<ActiveView>& activeViews) {
    const LongFileName controlFile = workingDir.name().in(kControlFileName);
    std::ostringstream text;
    WriteControlFile(text, views, nets);
    try {
        saveControlFile(text, controlFile);
    } catch (const std::system_error& error) {
        tkcore::warn(AString(error.what()));
    }
    std::vector<ActiveView> created;
    CollectViewFiles(views, workingDir.name(), created);
    observer.expected(created.size(), false);
    for (const ActiveView& view : created) {
        observer.extractionStarted(ViewTypeName(view.viewType), view.path);
    }
    try {
        ExtractaViewGenerator::runExtracta(design, controlFile, generatorOption, created,
                                           workingDir.name());
    } catch (const std::exception& exception) {
        return fail("extracta run failed: ", exception);
    }
    AString names;
    for (const ActiveView& view : created) {
        observer.extractionFinished(ViewTypeName(view.viewType));
        warnAboutFile(view.viewType, workingDir.name().in(MakeViewFileName(view.viewType, "")));
        names += (names.empty() ? "" : ",") + ViewTypeName(view.viewType);
    }
    tkcore::VelDebug(1, "Extracta %s finished \n", names);
    activeViews.insert(activeViews.begin(), created.begin(), created.end());
    return true;
}

bool ExtractaExecutor::createExtractaControlFileAndViewsMP(const AString& designFile,
                                                           const ViewSet& views,
                                                           const std::vector<AString>& nets,
                                                           std::vector<ActiveView>& activeViews) {
    tkcore::VelDebug(1, "*createExtractaControlFileAndViewsMP: workingdir %s\n",
                     workingDir.name().FilePath());
    try {
        ParallelRun run(tkcore::userPath(designFile), workingDir, generatorOption, observer);
        run.createViews(views, nets, activeViews);
    } catch (const std::exception& exception) {
        return fail("createExtractaControlFileAndViewsMP: ", exception);
    }
    return true;
}

bool ExtractaExecutor::addFilesToWorkingDir(const std::vector<AString>& files) {
    if (!tkcore::LFN_IsExistingDirectory(workingDirectory())) {
        return false;
    }
    VEL_ASSERT_TEXT(kSource, "fs::is_directory(workingpath)", isDirectory(workingDirectory()));
    try {
        copyFiles(files, workingDir.name());
    } catch (const tkcore::Interrupted& interrupted) {
        logReason(interrupted);
        return false;  // callers ignore it: the packaging fails next, for the same reason
    }
    return true;
}

bool ExtractaExecutor::zipActiveViews(const AString& outputPath, const AString& extension) {
    const LongFileName outpath = tkcore::userPath(outputPath);
    VEL_ASSERT_TEXT(kSource, "!fs::is_directory(outpath)", !isDirectory(outpath));
    CZipArchive archive;
    archive.beforeDelivery([&] {
        tkcore::waitUntilReplaceable({tkcore::followLinks(outpath)});
        refuseDesign(outpath, design);
        tkcore::passPointOfNoReturn();
    });
    try {
        requirePath(outpath, outputPath);
        refuseDesign(outpath, design);
        refuseInside(workingDir.name(), outpath);
        archive.Open(VEL_ANSI(outpath), CZipArchive::kCreate, 0);
    } catch (const std::exception& exception) {
        logReason(exception);
        VEL_ASSERT(kSource, !"open archive failed");
        return false;
    }
    try {
        pack(entriesWithExtension(workingDir, extension), archive, observer);
        // Close inside the try block: a full disk may show only here.
        archive.Close(0, false);
    } catch (const std::exception& exception) {
        logReason(exception);
        VEL_ASSERT(kSource, !"ExtractaExecutor::zipActiveViews, error with boost::filesystem");
        return false;
    }
    return true;
}

bool ExtractaExecutor::moveActiveViews(const AString& outputPath, const AString& extension) {
    const LongFileName outpath = tkcore::userPath(outputPath);
    VEL_ASSERT_TEXT(kSource, "fs::is_directory(outpath)", isDirectory(outpath));
    try {
        requirePath(outpath, outputPath);
        moveEntries(entriesWithExtension(workingDir, extension), outpath, design);
    } catch (const std::runtime_error& error) {
        logReason(error);
        VEL_ASSERT(kSource, !"ExtractaExecutor::moveActiveViews, error with boost::filesystem");
        return false;
    }
    return true;
}

bool ExtractaExecutor::fail(const AString& message) {
    tkcore::writeLog(0, "error: ", VEL_ANSI(message));
    errorMessage = message;
    return false;
}

bool ExtractaExecutor::fail(std::string_view prefix, const std::exception& exception) {
    // The message may be the whole output of an extractor, so it is copied only once, to
    // errorMessage.
    const std::string_view message = tkcore::messageOf(exception);
    tkcore::writeLog(0, std::string("error: ").append(prefix), message);
    errorMessage = AString(prefix);
    errorMessage.append(message);
    return false;
}

}  // namespace velextracta
