#include "process/inside/GeneratorPool.h"

#include <algorithm>

#include "process/ExtractaViewGenerator.h"
#include "tkcore/system/Interruption.h"

namespace velextracta {

bool GeneratorPool::hasRoom() const {
    return runningGenerators.size() < ExtractaViewGenerator::maxConcurrentExtractas;
}

void GeneratorPool::startOrQueue(ExtractaViewGenerator& generator) {
    if (hasRoom()) {
        start(generator);
    } else {
        waitingGenerators.push_back(&generator);
        observer().extractionQueued(generator.viewName());
    }
}

void GeneratorPool::start(ExtractaViewGenerator& generator) {
    generator.startExtracta();
    runningGenerators.push_back(&generator);
    watch.add(generator.child);
    observer().extractionStarted(generator.viewName(), generator.outputFile.FilePath());
}

bool GeneratorPool::isQueued(const ExtractaViewGenerator& generator) const {
    return std::ranges::find(waitingGenerators, &generator) != waitingGenerators.end();
}

void GeneratorPool::leave(ExtractaViewGenerator& generator) noexcept {
    watch.remove(generator.child);
    for (Queue* queue : {&waitingGenerators, &runningGenerators}) {
        queue->erase(std::remove(queue->begin(), queue->end(), &generator), queue->end());
    }
}

void GeneratorPool::pollProcesses() {
    tkcore::throwIfInterrupted();
    // A copy: reaping takes generators out of the queue.
    const auto running = runningGenerators;
    for (ExtractaViewGenerator* generator : running) {
        generator->checkFinished();
    }
    while (!waitingGenerators.empty() && hasRoom()) {
        ExtractaViewGenerator& next = *waitingGenerators.front();
        waitingGenerators.pop_front();
        start(next);
    }
}

void GeneratorPool::wait() {
    watch.wait(observer().restTime());
    observer().waiting();
}

void GeneratorPool::requestEnd() const noexcept {
    for (const ExtractaViewGenerator* generator : runningGenerators) {
        generator->child.requestEnd();
    }
}

}  // namespace velextracta
