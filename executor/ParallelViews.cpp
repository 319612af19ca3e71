#include <algorithm>
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include <boost/lexical_cast.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "executor/ConnectivityMerge.h"
#include "executor/ExtractaExecutor.h"
#include "executor/NetRanking.h"
#include "process/ExtractaViewGenerator.h"
#include "reader/ViewFile.h"
#include "tkcore/Log.h"
#include "views/ExtractaViewControl.h"
#include "views/ExtractaViewDef.h"

namespace velextracta {

using tkcore::AString;
using tkcore::LongFileName;
using tkcore::VEL_ANSI;

namespace {

/// The largest nets that get processes of their own.
constexpr std::size_t kMaxSplitNets = 4;

using Generators = std::vector<boost::shared_ptr<ExtractaViewGenerator>>;

/// The generators of one parallel run. Dropping it ends those that still run.
class ParallelRun final {
public:
    ParallelRun(const AString& design, const LongFileName& directory, bool option)
        : designFile(LongFileName(design)), workingDir(directory), generatorOption(option) {}

    void startOtherViews(const ViewSet& views, const std::vector<AString>& nets);
    void startConnectivity(const std::vector<AString>& nets);
    ActiveView mergeConnectivity();
    void waitForOtherViews(std::vector<ActiveView>& activeViews);

private:
    std::vector<RankedNet> surveyNets(const std::vector<AString>& nets) const;
    void splitNet(std::size_t rank, const AString& net);
    void start(Generators& generators, const ExtractaViewDef& definition, const AString& name) {
        generators.push_back(boost::make_shared<ExtractaViewGenerator>(
            designFile, definition, workingDir, generatorOption, name));
    }

    const LongFileName designFile;
    const LongFileName workingDir;
    const bool generatorOption;
    Generators otherGenerators;
    Generators connectivityGenerators;
};

/// A line break in a name would add a line to a control file. Such a net is left to the remainder.
bool canBeNamed(const RankedNet& net) {
    return net.netName.find_first_of("\r\n") == std::string::npos;
}

void ParallelRun::startOtherViews(const ViewSet& views, const std::vector<AString>& nets) {
    for (std::int32_t n = 0; n < views.GetCount(); ++n) {
        if (const ViewType viewType = views.GetAt(n); viewType != ViewType::conn) {
            start(otherGenerators, ExtractaViewDef(viewType, nets, false), "");
        }
    }
}

void ParallelRun::startConnectivity(const std::vector<AString>& nets) {
    std::vector<RankedNet> ranked = surveyNets(nets);
    std::erase_if(ranked, std::not_fn(canBeNamed));
    std::vector<AString> splitNets;
    for (std::size_t rank = 0; rank < std::min(kMaxSplitNets, ranked.size()); ++rank) {
        const AString net(ranked[rank].netName);
        splitNet(rank, net);
        splitNets.push_back(net);
    }
    // Without the net selection: the remainder covers every net of the design but the split ones.
    start(connectivityGenerators, ExtractaViewDef(ViewType::conn, splitNets, true), "remainder");
}

std::vector<RankedNet> ParallelRun::surveyNets(const std::vector<AString>& nets) const {
    ExtractaViewGenerator generator(designFile, MakeNetListDef(nets), workingDir, generatorOption,
                                    "nets");
    const std::string path = VEL_ANSI(generator.waitForViewFile().path);
    ExtractaViewData survey;
    readViewFile(path, survey);
    tkcore::VelDebug(1, "createExtractaControlFileAndViewsMP %d connectivity records\n",
                     survey.records().size());
    return rankNets(survey, path);
}

void ParallelRun::splitNet(std::size_t rank, const AString& net) {
    for (const std::vector<AString>& classes : ConnectivityClassGroups()) {
        AString name = boost::lexical_cast<std::string>(rank) + "_" + net;
        for (const AString& className : classes) {
            name += "_" + className;
        }
        start(connectivityGenerators, MakeNetClassDef(net, classes), name);
    }
}

ActiveView ParallelRun::mergeConnectivity() {
    const AString combinedPath = workingDir.FilePath() + MakeViewFileName(ViewType::conn, "");
    ConnectivityMerge merge(combinedPath);
    for (const auto& generator : connectivityGenerators) {
        merge.append(generator->waitForViewFile().path);
    }
    return {ViewType::conn, combinedPath};
}

void ParallelRun::waitForOtherViews(std::vector<ActiveView>& activeViews) {
    for (const auto& generator : otherGenerators) {
        activeViews.push_back(generator->waitForViewFile());
    }
}

}  // namespace

bool ExtractaExecutor::createExtractaControlFileAndViewsMP(const AString& designFile,
                                                           const ViewSet& views,
                                                           const std::vector<AString>& nets,
                                                           std::vector<ActiveView>& activeViews) {
    ExtractaViewGenerator::maxConcurrentExtractas = concurrentExtractaLimit();
    tkcore::VelDebug(1, "*createExtractaControlFileAndViewsMP: workingdir %s\n",
                     workingDir.FilePath());
    try {
        ParallelRun run(designFile, workingDir, generatorOption);
        run.startOtherViews(views, nets);
        if (views.Contains(ViewType::conn)) {
            run.startConnectivity(nets);
            activeViews.push_back(run.mergeConnectivity());
        }
        run.waitForOtherViews(activeViews);
    } catch (const std::exception& exception) {
        return fail(AString("createExtractaControlFileAndViewsMP: ") + exception.what());
    }
    return true;
}

}  // namespace velextracta
