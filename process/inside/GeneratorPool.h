#pragma once

#include <boost/container/deque.hpp>

#include "process/RunObserver.h"
#include "tkcore/programs/ChildWatch.h"

namespace velextracta {

class ExtractaViewGenerator;

/// Lets at most ExtractaViewGenerator::maxConcurrentExtractas generators have a running extracta;
/// the others wait for their turn, first in, first out.
///
/// There is one, and the generators alone use it. It looks at generators that others own; each
/// leaves it when it is destroyed. It moves on only when it is polled.
class GeneratorPool final {
public:
    void startOrQueue(ExtractaViewGenerator& generator);
    [[nodiscard]] bool isQueued(const ExtractaViewGenerator& generator) const;
    void leave(ExtractaViewGenerator& generator) noexcept;

    /// One scheduling pass: reaps the children that are known to have ended, then starts queued
    /// generators while there is room.
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
    bool hasRoom() const;
    void start(ExtractaViewGenerator& generator);

    /// Takes no memory while it is empty: there is one before main().
    using Queue = boost::container::deque<ExtractaViewGenerator*>;

    Queue waitingGenerators;
    Queue runningGenerators;
    tkcore::ChildWatch watch;
    RunObserver* currentObserver = &nobody();
};

}  // namespace velextracta
