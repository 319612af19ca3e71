#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "executor/inside/NetRanking.h"
#include "executor/inside/WorkingDirectory.h"
#include "process/ExtractaViewGenerator.h"
#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/text/AString.h"
#include "views/ActiveView.h"
#include "views/ViewType.h"

namespace velextracta {

/// Creates views by many extractions side by side: one for each view, several for connectivity. The
/// executor owns it for one run. The destructor ends the extractions that still run.
class ParallelRun final {
public:
    ParallelRun(const tkcore::LongFileName& design, const WorkingDirectory& workingDirectory,
                bool option, RunObserver& runObserver);
    ~ParallelRun();
    ParallelRun(const ParallelRun&) = delete;
    ParallelRun& operator=(const ParallelRun&) = delete;

    /// Adds the views of the set, restricted to the nets (none: all), in the order in which they
    /// are complete. Every failure is thrown.
    void createViews(const ViewSet& views, const std::vector<tkcore::AString>& nets,
                     std::vector<ActiveView>& activeViews);

private:
    using Generators = std::vector<boost::shared_ptr<ExtractaViewGenerator>>;

    void startOtherViews(const ViewSet& views, const std::vector<tkcore::AString>& nets);
    void startConnectivity(const std::vector<tkcore::AString>& nets);
    ActiveView mergeConnectivity();
    void waitForOtherViews(std::vector<ActiveView>& activeViews);

    std::vector<RankedNet> surveyNets(const std::vector<tkcore::AString>& nets);
    bool canHaveProcesses(const tkcore::AString& net, std::vector<tkcore::AString>& tooDeep) const;
    void splitNet(std::size_t rank, const tkcore::AString& net);
    std::uint64_t finishedConnectivityBytes() const;
    /// The view's file, reached through the working directory.
    tkcore::LongFileName fileOf(const ActiveView& view) const {
        return workingDir.in(tkcore::LongFileName(view.path).name());
    }
    void start(Generators& generators, const ExtractaViewDef& definition,
               const tkcore::AString& name);

    const tkcore::LongFileName designFile;
    const WorkingDirectory& directory;
    const tkcore::LongFileName workingDir;
    const bool generatorOption;
    RunObserver& observer;
    std::optional<ExtractaViewGenerator> survey;
    Generators otherGenerators;
    Generators connectivityGenerators;
};

}  // namespace velextracta
