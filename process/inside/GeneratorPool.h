#pragma once

#include <cstdint>

#include <boost/container/deque.hpp>

#include "process/RunObserver.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/programs/ChildProgram.h"
#include "tkcore/programs/ChildWatch.h"
#include "tkcore/text/AString.h"

namespace velextracta {

/// An extraction as the pool sees it.
class PooledExtraction {
public:
    PooledExtraction() = default;
    PooledExtraction(const PooledExtraction&) = delete;
    PooledExtraction& operator=(const PooledExtraction&) = delete;

    virtual void startExtracta() = 0;
    /// Whether extracta still runs; leaves the pool once it has ended. Throws when it has failed.
    virtual bool checkFinished() = 0;
    [[nodiscard]] virtual tkcore::ChildProgram& program() noexcept = 0;
    /// As an observer is told.
    [[nodiscard]] virtual tkcore::AString viewName() const = 0;
    [[nodiscard]] virtual const tkcore::LongFileName& viewFile() const noexcept = 0;

protected:
    ~PooledExtraction() = default;
};

/// Lets so many extractions run at once as the limit says; the others wait for their turn, first
/// in, first out.
///
/// There is one, and the generators alone use it. It looks at extractions that others own; each
/// leaves it when it is destroyed. It moves on only when it is polled.
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

    /// Pauses until there is news of a child, or something to show; or only asks for news.
    void wait();
    void refresh() noexcept { watch.refresh(); }

    /// Lets the pool tell an observer for as long as it lives; then it tells nobody.
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

    /// Asks every running child to end, all at the same time.
    void requestEnd() const noexcept;

private:
    bool hasRoom() const { return running.size() < limit; }
    void start(PooledExtraction& extraction);

    /// Takes no memory while it is empty: there is one before main().
    using Queue = boost::container::deque<PooledExtraction*>;

    const std::uint32_t& limit;
    Queue waiting;
    Queue running;
    tkcore::ChildWatch watch;
    RunObserver* currentObserver = &nobody();
};

}  // namespace velextracta
