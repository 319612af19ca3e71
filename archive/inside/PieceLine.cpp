#include "archive/inside/PieceLine.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "tkcore/system/QuietThread.h"

namespace velextracta {

PieceTools::PieceTools(MakeWorker makeWorker, unsigned threadCount)
    : make(std::move(makeWorker)),
      mostThreads(std::max(threadCount, 1U) - 1),
      places(2 * (mostThreads + 1)) {}

PieceWorker& PieceTools::worker(std::size_t number) {
    if (number == workers.size()) {
        workers.push_back(make());
    }
    return *workers[number];
}

PieceLine::PieceLine(Read readBytes, PieceTools& pieceTools)
    : read(std::move(readBytes)), tools(pieceTools) {
    tools.worker(0);
    // Reserve memory first: a thread that is started but cannot be stored would not be joined.
    threads.reserve(tools.mostThreads);
}

PieceLine::~PieceLine() {
    {
        const std::lock_guard lock(mutex);
        isStopped = true;
    }
    pieceGiven.notify_all();
}

const Piece* PieceLine::next() {
    readAhead();
    if (taken == given) {
        return nullptr;
    }
    Place& oldest = placeOf(taken);
    {
        std::unique_lock lock(mutex);
        while (!oldest.isDone) {
            if (claimed < given) {
                workOnOne(lock, tools.worker(0));
            } else {
                pieceDone.wait(lock);
            }
        }
    }
    if (oldest.failure) {
        std::rethrow_exception(oldest.failure);
    }
    ++taken;
    return &oldest.piece;
}

void PieceLine::readAhead() {
    while (!isAtEnd && given - taken < tools.places.size()) {
        Place& place = placeOf(given);
        const std::span room = place.piece.room();
        place.piece.original = room.first(read(room));
        place.isDone = false;
        place.failure = nullptr;
        isAtEnd = place.piece.original.size() < room.size();
        if (place.piece.original.empty()) {
            return;
        }
        {
            const std::lock_guard lock(mutex);
            ++given;
        }
        pieceGiven.notify_one();
        // The caller processes the first piece.
        if (threads.size() < std::min<std::uint64_t>(tools.mostThreads, given - 1)) {
            startThread();
        }
    }
}

void PieceLine::startThread() {
    PieceWorker& worker = tools.worker(threads.size() + 1);
    try {
        threads.push_back(tkcore::startQuietThread([this, &worker] { workUntilStopped(worker); }));
    } catch (const std::system_error&) {
        tools.mostThreads = threads.size();  // go on with the running ones
    }
}

void PieceLine::workUntilStopped(PieceWorker& worker) {
    std::unique_lock lock(mutex);
    for (;;) {
        pieceGiven.wait(lock, [this] { return isStopped || claimed < given; });
        if (isStopped) {
            return;
        }
        workOnOne(lock, worker);
    }
}

void PieceLine::workOnOne(std::unique_lock<std::mutex>& lock, PieceWorker& worker) {
    Place& place = placeOf(claimed++);
    lock.unlock();
    try {
        worker.work(place.piece);
    } catch (...) {
        place.failure = std::current_exception();
    }
    lock.lock();
    place.isDone = true;
    pieceDone.notify_one();
}

}  // namespace velextracta
