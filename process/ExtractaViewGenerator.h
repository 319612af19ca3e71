#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "tkcore/AString.h"
#include "tkcore/LongFileName.h"
#include "tkcore/Pipe.h"
#include "tkcore/Process.h"
#include "tkcore/System.h"
#include "views/ActiveView.h"
#include "views/ExtractaViewDef.h"

namespace velextracta {

/// How many extracta processes may run at once on a machine with that many hardware threads (0:
/// unknown): half as many, at least one.
std::uint32_t concurrentExtractaLimit(unsigned hardwareThreads = tkcore::hardwareThreads());

/// One extracta process for one view request: from its control file to its view file.
///
/// Generators share a pool that lets at most maxConcurrentExtractas of them run at once; it moves
/// on only while somebody is in waitForViewFile. One thread only. All failures, and a noted
/// request to end the run, are ExtractaParserExceptions.
class ExtractaViewGenerator final {
public:
    /// Writes the control file into the working directory, then starts extracta or queues it.
    /// Characters of the name other than letters, digits, "-" and "_" become "_". The option puts
    /// "-c" on the command line.
    ExtractaViewGenerator(const tkcore::LongFileName& designFile, const ExtractaViewDef& viewDef,
                          const tkcore::LongFileName& workingDir, bool generatorOption,
                          const tkcore::AString& name);

    /// Ends extracta's process tree if it still runs.
    ~ExtractaViewGenerator();

    ExtractaViewGenerator(const ExtractaViewGenerator&) = delete;
    ExtractaViewGenerator& operator=(const ExtractaViewGenerator&) = delete;

    /// Returns when extracta has ended, with the view and the full path of its file. Also throws
    /// what goes wrong with any other running generator.
    ActiveView waitForViewFile();

    /// Runs one extracta for a control file of several views, outside the pool, and returns when
    /// it has ended. The paths of the views are the output files in the order of their blocks.
    static void runExtracta(const tkcore::LongFileName& designFile,
                            const tkcore::LongFileName& controlFile, bool generatorOption,
                            const std::vector<ActiveView>& views,
                            const tkcore::LongFileName& workingDir);

    /// One scheduling pass: reaps the children that have ended and starts queued ones while there
    /// is room. For those who do something long between two waits.
    static void pollProcesses();

    /// Limit of the pool; set anew at the start of each parallel run.
    static std::uint32_t maxConcurrentExtractas;

private:
    void writeControlFile(const ExtractaViewDef& viewDef,
                          const tkcore::LongFileName& controlFile) const;
    void startOrQueue();
    bool checkFinished();
    bool isQueued() const;
    void leaveQueues();

    // Both queues look at generators that others own; each leaves them when it is destroyed.
    static std::deque<ExtractaViewGenerator*> waitingGenerators;
    static std::deque<ExtractaViewGenerator*> runningGenerators;

    ViewType viewType;
    tkcore::AString name;
    tkcore::LongFileName workingDir;
    tkcore::LongFileName outputFile;
    tkcore::ProcessHandle processHandle = nullptr;  // null while no child of ours runs
    tkcore::CPipe pipe;                             // open only while the child runs
    tkcore::AString output;                         // all that the child has printed
    std::vector<tkcore::AString> arguments;
};

}  // namespace velextracta
