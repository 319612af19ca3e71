#pragma once

#include <cstdint>
#include <vector>

#include "process/inside/GeneratorPool.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/programs/ChildProgram.h"
#include "tkcore/system/System.h"
#include "tkcore/text/AString.h"
#include "views/ActiveView.h"
#include "views/ExtractaViewDef.h"

namespace velextracta {

/// How many extracta processes may run at once: half the number of hardware threads (0: unknown),
/// at least one.
std::uint32_t concurrentExtractaLimit(unsigned hardwareThreads = tkcore::hardwareThreads());

/// A generator's name as its files have it: with "_" for every character but letters, digits, "-"
/// and "_".
tkcore::AString sanitisedName(const tkcore::AString& name);

/// One extracta process for one view request: from its control file to its view file. Owns the
/// process. The code that needs the view owns the generator.
///
/// Generators share a pool that lets at most maxConcurrentExtractas of them run at once. The pool
/// makes progress only when it is polled, by waitForViewFile or pollProcesses. One thread only.
/// Failures are ExtractaParserExceptions; a request to end the run is tkcore::Interrupted.
class ExtractaViewGenerator final : private PooledExtraction {
public:
    /// Writes the control file into the working directory, then starts extracta or queues it. The
    /// option puts "-c" on the command line.
    ExtractaViewGenerator(const tkcore::LongFileName& designFile, const ExtractaViewDef& viewDef,
                          const tkcore::LongFileName& workingDir, bool generatorOption,
                          const tkcore::AString& name);

    /// Ends extracta's process tree if it still runs.
    ~ExtractaViewGenerator();

    /// Returns when extracta has ended, with the view and the full path of its file. Also throws
    /// the failure of any other running generator.
    ActiveView waitForViewFile();

    /// Bytes of the view file; 0 while extracta has not ended.
    std::uint64_t finishedSize() const;

    /// Runs one extracta for a control file of several views, outside the pool, and returns when
    /// it has ended. The output files are in the order of their blocks.
    static void runExtracta(const tkcore::LongFileName& designFile,
                            const tkcore::LongFileName& controlFile, bool generatorOption,
                            const std::vector<ActiveView>& views,
                            const tkcore::LongFileName& workingDir);

    /// One scheduling pass, for long work between two waits.
    static void pollProcesses();

    /// Asks all running extracta processes to end at the same time. Dropping the generators one by
    /// one would wait for each.
    static void requestEndOfAll() noexcept { pool.requestEnd(); }

    /// Reports the extractions to the observer until the result is destroyed.
    static GeneratorPool::Reporting reportTo(RunObserver& observer) { return {pool, observer}; }

    /// The pool's limit, set at the start of each parallel run.
    static std::uint32_t maxConcurrentExtractas;

private:
    void writeControlFile(const ExtractaViewDef& viewDef,
                          const tkcore::LongFileName& controlFile) const;
    void startExtracta() override;
    bool checkFinished() override;
    tkcore::ChildProgram& program() noexcept override { return child; }
    tkcore::AString viewName() const override { return ViewTypeName(viewType) + name; }
    const tkcore::LongFileName& viewFile() const noexcept override { return outputFile; }

    static GeneratorPool pool;

    /// Removes the generator from the pool, also if its constructor throws.
    class Membership final {
    public:
        explicit Membership(ExtractaViewGenerator& owner) : generator(owner) {}
        ~Membership() { pool.leave(generator); }
        Membership(const Membership&) = delete;
        Membership& operator=(const Membership&) = delete;

    private:
        ExtractaViewGenerator& generator;
    };

    ViewType viewType;
    tkcore::AString name;
    tkcore::LongFileName workingDir;
    tkcore::LongFileName outputFile;
    std::vector<tkcore::AString> arguments;
    tkcore::ChildProgram child;  // has a pipe only while it runs
    Membership membership{*this};
};

}  // namespace velextracta
