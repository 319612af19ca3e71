#include "process/inside/GeneratorPool.h"

#include <algorithm>

#include "tkcore/system/Interruption.h"

namespace velextracta {

void GeneratorPool::startOrQueue(PooledExtraction& extraction) {
    if (hasRoom()) {
        start(extraction);
    } else {
        waitingGenerators.push_back(&extraction);
        observer().extractionQueued(extraction.viewName());
    }
}

void GeneratorPool::start(PooledExtraction& extraction) {
    extraction.startExtracta();
    runningGenerators.push_back(&extraction);
    watch.add(extraction.program());
    observer().extractionStarted(extraction.viewName(), extraction.viewFile().FilePath());
}

bool GeneratorPool::isQueued(const PooledExtraction& extraction) const {
    return std::ranges::find(waitingGenerators, &extraction) != waitingGenerators.end();
}

void GeneratorPool::leave(PooledExtraction& extraction) noexcept {
    watch.remove(extraction.program());
    for (Queue* queue : {&waitingGenerators, &runningGenerators}) {
        queue->erase(std::remove(queue->begin(), queue->end(), &extraction), queue->end());
    }
}

void GeneratorPool::pollProcesses() {
    tkcore::throwIfInterrupted();
    // Iterate over a copy: reaping removes extractions from the queue.
    for (PooledExtraction* extraction : Queue(runningGenerators)) {
        extraction->checkFinished();
    }
    while (!waitingGenerators.empty() && hasRoom()) {
        PooledExtraction& next = *waitingGenerators.front();
        waitingGenerators.pop_front();
        start(next);
    }
}

void GeneratorPool::wait() {
    watch.wait(observer().restTime());
    observer().waiting();
}

void GeneratorPool::requestEnd() const noexcept {
    for (PooledExtraction* extraction : runningGenerators) {
        extraction->program().requestEnd();
    }
}

}  // namespace velextracta
