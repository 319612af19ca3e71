#include "executor/ExtractaExecutor.h"

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <utility>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include "process/ExtractaViewGenerator.h"
#include "tkcore/Assertion.h"
#include "tkcore/Log.h"
#include "views/ExtractaViewControl.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;

namespace {

constexpr char kSource[] = "ExtractaExecutor";

/// Seconds since 1970 on the local wall clock, low 32 bits.
std::int32_t runNumber() {
    namespace pt = boost::posix_time;
    const pt::ptime start(boost::gregorian::date(1970, 1, 1));
    const pt::time_duration elapsed = pt::microsec_clock::local_time() - start;
    return static_cast<std::int32_t>(elapsed.total_microseconds() / 1'000'000);
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
    workingDir = LongFileName(AString::Format("%sextract%d/", baseDirectory.FilePath(), number));
    ownsWorkingDir = tkcore::LFN_CreateDirectory(workingDir);
    if (!ownsWorkingDir) {
        VEL_ASSERT(kSource,
                   !"APDLinkServer::createExtractaViews, could not create working directory");
        return fail(
            AString::Format("Could not create working directory at \"%s\"", workingDir.FilePath()));
    }
    return true;
}

bool ExtractaExecutor::deleteWorkingDir() {
    if (!ownsWorkingDir || !tkcore::LFN_IsExistingDirectory(workingDir) ||
        tkcore::LFN_Delete(workingDir)) {
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
    return views.Contains(ViewType::conn)
               ? createExtractaControlFileAndViewsMP(designFile, views, nets, activeViews)
               : createViewsWithOneProcess(designFile, views, nets, activeViews);
}

bool ExtractaExecutor::createViewsWithOneProcess(const AString& designFile, const ViewSet& views,
                                                 const std::vector<AString>& nets,
                                                 std::vector<ActiveView>& activeViews) {
    const LongFileName controlFile(workingDir.FilePath() + "extracta_control.txt");
    std::ofstream stream = OpenControlFile(controlFile);
    WriteControlFile(stream, views, nets);
    stream.close();
    std::vector<ActiveView> created;
    CollectViewFiles(views, workingDir, created);
    try {
        ExtractaViewGenerator::runExtracta(LongFileName(designFile), controlFile, generatorOption,
                                           created, workingDir);
    } catch (const std::exception& exception) {
        return fail(AString("extracta run failed: ") + exception.what());
    }
    activeViews.insert(activeViews.begin(), created.begin(), created.end());
    return true;
}

bool ExtractaExecutor::fail(AString message) {
    tkcore::VelDebug(0, "error: %s", message);
    errorMessage = std::move(message);
    return false;
}

}  // namespace velextracta
