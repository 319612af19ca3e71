#include "tkcore/report/inside/ConsoleWriter.windows.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace tkcore {

struct ConsoleWriter::Work final {
    explicit Work(Write writeText) : write(std::move(writeText)) {}

    void run() {
        std::unique_lock lock(mutex);
        while (true) {
            changed.wait(lock, [this] { return isOver || hasText(); });
            if (!hasText()) {
                return;
            }
            const std::wstring text = std::exchange(printed, {}) + std::exchange(shown, {});
            isWriting = true;
            lock.unlock();
            write(text);
            lock.lock();
            isWriting = false;
            changed.notify_all();
        }
    }
    bool hasText() const { return !printed.empty() || !shown.empty(); }

    const Write write;
    std::mutex mutex;
    std::condition_variable changed;
    std::wstring printed;
    std::wstring shown;
    bool isWriting = false;
    bool isOver = false;
};

ConsoleWriter::ConsoleWriter(Write write) : work(std::make_shared<Work>(std::move(write))) {
    std::thread([shared = work] { shared->run(); }).detach();
}

ConsoleWriter::~ConsoleWriter() {
    const std::lock_guard lock(work->mutex);
    work->isOver = true;
    work->changed.notify_all();
}

void ConsoleWriter::show(std::wstring line) {
    const std::lock_guard lock(work->mutex);
    work->shown = std::move(line);
    work->changed.notify_all();
}

void ConsoleWriter::print(const std::wstring& text) {
    const std::lock_guard lock(work->mutex);
    work->shown.clear();
    work->printed += text;
    work->changed.notify_all();
}

bool ConsoleWriter::waitFor(std::chrono::milliseconds patience) {
    std::unique_lock lock(work->mutex);
    return work->changed.wait_for(lock, patience,
                                  [this] { return !work->hasText() && !work->isWriting; });
}

}  // namespace tkcore
