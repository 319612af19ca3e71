#include "process/inside/GeneratorPool.h"

#include <algorithm>

#include "tkcore/system/Interruption.h"

namespace velextracta {

void GeneratorPool::startOrQueue(PooledExtraction& extraction) {
    if (hasRoom()) {
        start(extraction);
    } else {
        waiting.push_back(&extraction);
        observer().extractionQueued(extraction.viewName());
    }
}

void GeneratorPool::start(PooledExtraction& extraction) {
    extraction.startExtracta();
    running.push_back(&extraction);
    watch.add(extraction.program());
    observer().extractionStarted(extraction.viewName(), extraction.viewFile().FilePath());
}

bool GeneratorPool::isQueued(const PooledExtraction& extraction) const {
    return std::ranges::find(waiting, &extraction) != waiting.end();
}

void GeneratorPool::leave(PooledExtraction& extraction) noexcept {
    watch.remove(extraction.program());
    for (Queue* queue : {&waiting, &running}) {
        queue->erase(std::remove(queue->begin(), queue->end(), &extraction), queue->end());
    }
}

void GeneratorPool::pollProcesses() {
    tkcore::throwIfInterrupted();
    // Iterate over a copy: reaping removes extractions from the queue.
    for (PooledExtraction* extraction : Queue(running)) {
        extraction->checkFinished();
    }
    while (!waiting.empty() && hasRoom()) {
        PooledExtraction& next = *waiting.front();
        waiting.pop_front();
        start(next);
    }
}

void GeneratorPool::wait() {
    watch.wait(observer().restTime());
    observer().waiting();
}

void GeneratorPool::requestEnd() const noexcept {
    for (PooledExtraction* extraction : running) {
        extraction->program().requestEnd();
    }
}

}  // namespace velextracta
