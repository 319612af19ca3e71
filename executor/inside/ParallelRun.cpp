#include "executor/inside/ParallelRun.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <vector>

#include <boost/lexical_cast.hpp>
#include <boost/make_shared.hpp>

#include "executor/inside/ConnectivityMerge.h"
#include "executor/inside/NetRanking.h"
#include "executor/inside/Warnings.h"
#include "process/ExtractaViewGenerator.h"
#include "reader/ViewFile.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/report/Log.h"
#include "views/ExtractaViewControl.h"
#include "views/ExtractaViewDef.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::VEL_ANSI;

namespace {

/// How many of the largest nets are split.
constexpr std::size_t kMaxSplitNets = 4;
static_assert(kMaxSplitNets <= 10, "the length of a name is that of any rank of one digit");

/// The name of the generator for one class group of a split net.
AString generatorName(std::size_t rank, const AString& net, const std::vector<AString>& classes) {
    AString name = boost::lexical_cast<std::string>(rank) + "_" + net;
    for (const AString& className : classes) {
        name += "_" + className;
    }
    return name;
}

/// How many extractions may run at the same time: the number in VELTAR_EXTRACTA_LIMIT, from 1 to
/// 1000, or half the number of hardware threads.
std::uint32_t extractaLimit() {
    constexpr std::uint32_t kHighest = 1000;
    const char* variable = std::getenv("VELTAR_EXTRACTA_LIMIT");
    if (variable == nullptr) {
        return concurrentExtractaLimit();
    }
    const std::string_view text = variable;
    std::uint32_t limit = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || limit == 0 || limit > kHighest) {
        tkcore::warn("VELTAR_EXTRACTA_LIMIT is ignored, it is no number from 1 to 1000: " +
                     AString(text));
        return concurrentExtractaLimit();
    }
    return limit;
}

void warnAboutNetsWithoutRecord(const std::vector<AString>& nets,
                                const std::vector<RankedNet>& ranked) {
    std::unordered_set<std::string> surveyed;
    std::unordered_set<std::string> selected;
    for (const AString& net : nets) {
        selected.insert(VEL_ANSI(net));
    }
    for (const RankedNet& net : ranked) {
        if (selected.contains(net.netName)) {
            surveyed.insert(net.netName);
        }
    }
    for (const AString& net : nets) {
        if (!surveyed.contains(VEL_ANSI(net))) {
            tkcore::warn("the selected net \"" + net + "\" has no connectivity record");
        }
    }
}

/// Warns of nets whose files would have paths that are too long, in one line.
void warnAboutDepth(const std::vector<AString>& nets) {
    if (!nets.empty()) {
        const AString others =
            nets.size() == 1 ? "\" is" : AString::Format("\" and %d others are", nets.size() - 1);
        tkcore::warn("the net \"" + nets.front() + others +
                     " left to the remainder: the path of a file would be too long for extracta");
    }
}

}  // namespace

ParallelRun::ParallelRun(const LongFileName& design, const WorkingDirectory& workingDirectory,
                         bool option, RunObserver& runObserver)
    : designFile(design),
      directory(workingDirectory),
      workingDir(directory.name()),
      generatorOption(option),
      observer(runObserver) {
    ExtractaViewGenerator::maxConcurrentExtractas = extractaLimit();
}

ParallelRun::~ParallelRun() {
    // Ask all at the same time. Each destructor then waits for its own.
    ExtractaViewGenerator::requestEndOfAll();
}

void ParallelRun::createViews(const ViewSet& views, const std::vector<AString>& nets,
                              std::vector<ActiveView>& activeViews) {
    // Each view but conn, the survey and the remainder. The pieces of large nets are added later.
    observer.expected(static_cast<std::size_t>(views.GetCount()) + 1, true);
    startOtherViews(views, nets);
    if (views.Contains(ViewType::conn)) {
        startConnectivity(nets);
        activeViews.push_back(mergeConnectivity());
    }
    waitForOtherViews(activeViews);
}

void ParallelRun::start(Generators& generators, const ExtractaViewDef& definition,
                        const AString& name) {
    directory.requireName();
    generators.push_back(boost::make_shared<ExtractaViewGenerator>(
        designFile, definition, workingDir, generatorOption, name));
}

void ParallelRun::startOtherViews(const ViewSet& views, const std::vector<AString>& nets) {
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        if (const ViewType viewType = views.GetAt(n); viewType != ViewType::conn) {
            start(otherGenerators, ExtractaViewDef(viewType, nets, false), "");
        }
    }
}

void ParallelRun::startConnectivity(const std::vector<AString>& nets) {
    const std::vector<RankedNet> ranked = surveyNets(nets);
    observer.surveyed(ranked.size());
    warnAboutNetsWithoutRecord(nets, ranked);
    std::vector<AString> splitNets;
    std::vector<AString> tooDeep;
    for (const RankedNet& candidate : ranked) {
        if (splitNets.size() == kMaxSplitNets) {
            break;
        }
        if (const AString net(candidate.netName); canHaveProcesses(net, tooDeep)) {
            splitNets.push_back(net);
        }
    }
    warnAboutDepth(tooDeep);
    // The other views, the survey, the pieces and the remainder.
    observer.expected(
        otherGenerators.size() + splitNets.size() * connectivityClassGroups().size() + 2, false);
    for (std::size_t rank = 0; rank < splitNets.size(); ++rank) {
        splitNet(rank, splitNets[rank]);
    }
    // Ignore the net selection: the remainder covers every net of the design but the split ones.
    start(connectivityGenerators, ExtractaViewDef(ViewType::conn, splitNets, true),
          kRemainderSuffix);
    survey.reset();
}

std::vector<RankedNet> ParallelRun::surveyNets(const std::vector<AString>& nets) {
    survey.emplace(designFile, MakeNetListDef(nets), workingDir, generatorOption, kSurveySuffix);
    const LongFileName file = fileOf(survey->waitForViewFile());
    directory.requireName();
    NetSurvey connectivity;
    streamViewFile(file, connectivity);
    tkcore::VelDebug(1, "createExtractaControlFileAndViewsMP %d connectivity records\n",
                     connectivity.recordCount());
    return connectivity.takeRanking(VEL_ANSI(file));
}

/// Whether the net can be split. If not, the remainder covers it. Adds the net to the others if
/// that is because of the folder: there may be as many as the design has.
bool ParallelRun::canHaveProcesses(const AString& net, std::vector<AString>& tooDeep) const {
    if (net.wide().find_first_of(L"\r\n") != std::wstring::npos) {
        // The line break would add a line to a control file.
        tkcore::warn("the net \"" + net + "\" is left to the remainder: a line break in its name");
        return false;
    }
    // A control file's name is longer than its view file's. The rank in it has one digit.
    const auto controlFile = [&](const AString& name) {
        return workingDir.in(makeControlFileName(ViewType::conn, name));
    };
    // If even the remainder's path is long, the extractor must accept long paths anyhow.
    const bool isOrdinary = !tkcore::isTooLongForPrograms(controlFile(kRemainderSuffix));
    const auto isAny = [&](bool (*isWrong)(const LongFileName&)) {
        return std::ranges::any_of(connectivityClassGroups(), [&](const auto& classes) {
            return isWrong(controlFile(sanitisedName(generatorName(0, net, classes))));
        });
    };
    if (isAny(tkcore::isTooLong)) {
        tkcore::warn("the net \"" + net +
                     "\" is left to the remainder: its name is too long for the name of a file");
        return false;
    }
    if (isOrdinary && isAny(tkcore::isTooLongForPrograms)) {
        tooDeep.push_back(net);
        return false;
    }
    return true;
}

void ParallelRun::splitNet(std::size_t rank, const AString& net) {
    for (const std::vector<AString>& classes : connectivityClassGroups()) {
        start(connectivityGenerators, MakeNetClassDef(net, classes),
              generatorName(rank, net, classes));
    }
}

std::uint64_t ParallelRun::finishedConnectivityBytes() const {
    std::uint64_t bytes = 0;
    for (const auto& generator : connectivityGenerators) {
        bytes += generator->finishedSize();
    }
    return bytes;
}

ActiveView ParallelRun::mergeConnectivity() {
    const LongFileName combined = workingDir.in(MakeViewFileName(ViewType::conn, ""));
    std::uint64_t merged = 0;
    std::uint64_t finished = 0;
    // A large piece takes long. Meanwhile, reap finished children and start queued ones.
    ConnectivityMerge merge(combined, [&](std::size_t bytes) {
        observer.merged(merged += bytes, finished);
        ExtractaViewGenerator::pollProcesses();
    });
    for (const auto& generator : connectivityGenerators) {
        const LongFileName piece = fileOf(generator->waitForViewFile());
        const std::uint64_t mergedThen = merged + generator->finishedSize();
        finished = finishedConnectivityBytes();
        observer.merged(merged, finished);
        merge.append(piece);
        warnAboutFile(ViewType::conn, piece);
        observer.merged(merged = mergedThen, finished);  // the header lines included
    }
    return {ViewType::conn, combined.FilePath()};
}

void ParallelRun::waitForOtherViews(std::vector<ActiveView>& activeViews) {
    for (const auto& generator : otherGenerators) {
        activeViews.push_back(generator->waitForViewFile());
        warnAboutFile(activeViews.back().viewType, fileOf(activeViews.back()));
    }
}

}  // namespace velextracta
