#pragma once

#include <cstdint>

#include <boost/container/deque.hpp>

#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/programs/ChildProgram.h"
#include "tkcore/programs/ChildWatch.h"
#include "tkcore/text/AString.h"

namespace velextracta {

/// The pool's view of an extraction.
class PooledExtraction {
public:
    PooledExtraction() = default;
    PooledExtraction(const PooledExtraction&) = delete;
    PooledExtraction& operator=(const PooledExtraction&) = delete;

    virtual void startExtracta() = 0;
    /// Whether extracta still runs; leaves the pool once it has ended. Throws if it has failed.
    virtual bool checkFinished() = 0;
    [[nodiscard]] virtual tkcore::ChildProgram& program() noexcept = 0;
    /// The name in reports to an observer.
    [[nodiscard]] virtual tkcore::AString viewName() const = 0;
    [[nodiscard]] virtual const tkcore::LongFileName& viewFile() const noexcept = 0;

protected:
    ~PooledExtraction() = default;
};

/// Limits the number of extractions that run at once; the others wait, first in, first out.
///
/// There is one pool, and only the generators use it. It points to extractions that others own;
/// each of them leaves the pool when it is destroyed. It makes progress only when it is polled.
class GeneratorPool final {
public:
    /// The limit may change at any time.
    explicit GeneratorPool(const std::uint32_t& currentLimit) : limit(currentLimit) {}

    void startOrQueue(PooledExtraction& extraction);
    [[nodiscard]] bool isQueued(const PooledExtraction& extraction) const;
    void leave(PooledExtraction& extraction) noexcept;

    /// One scheduling pass: reaps the children that are known to have ended, then starts queued
    /// extractions while there is room.
    void pollProcesses();

    /// Waits until there is news of a child, or something to show.
    void wait();
    /// Asks for news without waiting.
    void refresh() noexcept { watch.refresh(); }

    /// Makes the pool report to an observer, until this object is destroyed.
    class Reporting final {
    public:
        Reporting(GeneratorPool& reportingPool, RunObserver& observer) : pool(reportingPool) {
            pool.currentObserver = &observer;
        }
        ~Reporting() { pool.currentObserver = &nobody(); }
        Reporting(const Reporting&) = delete;
        Reporting& operator=(const Reporting&) = delete;

    private:
        GeneratorPool& pool;
    };
    [[nodiscard]] RunObserver& observer() const noexcept { return *currentObserver; }

    /// Asks all running children to end at the same time.
    void requestEnd() const noexcept;

private:
    bool hasRoom() const { return runningGenerators.size() < limit; }
    void start(PooledExtraction& extraction);

    /// Takes no memory while it is empty, because the pool exists before main().
    using Queue = boost::container::deque<PooledExtraction*>;

    const std::uint32_t& limit;
    Queue waitingGenerators;
    Queue runningGenerators;
    tkcore::ChildWatch watch;
    RunObserver* currentObserver = &nobody();
};

}  // namespace velextracta
