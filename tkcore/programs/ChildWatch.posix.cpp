#include "tkcore/programs/ChildWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <limits>
#include <vector>

#include <sys/epoll.h>

#include "tkcore/programs/ChildProgram.h"
#include "tkcore/programs/inside/PipeEnd.posix.h"
#include "tkcore/programs/inside/StartedProcess.posix.h"
#include "tkcore/system/FileDescriptor.posix.h"
#include "tkcore/system/Interruption.h"
#include "tkcore/system/System.h"

namespace tkcore {

namespace {

using std::chrono::milliseconds;

/// Between two looks at a program that cannot be watched.
constexpr milliseconds kPass{1};

/// Lets a signal come at no moment but that of the wait: one that came between the last question
/// for a request to end and the wait would not end it.
class SignalsOnlyWhileWaiting final {
public:
    SignalsOnlyWhileWaiting() noexcept {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &usual);
    }
    ~SignalsOnlyWhileWaiting() { pthread_sigmask(SIG_SETMASK, &usual, nullptr); }
    SignalsOnlyWhileWaiting(const SignalsOnlyWhileWaiting&) = delete;
    SignalsOnlyWhileWaiting& operator=(const SignalsOnlyWhileWaiting&) = delete;

    [[nodiscard]] const sigset_t& whileWaiting() const noexcept { return usual; }

private:
    sigset_t usual{};
};

/// In the system's form: for ever if the time is longer than that can say.
int timeout(milliseconds time) noexcept {
    constexpr milliseconds kLongest{std::numeric_limits<int>::max()};
    return time > kLongest ? -1 : static_cast<int>(time.count());
}

}  // namespace

struct ChildWatch::System final {
    bool watch(const FileDescriptor& descriptor, ChildProgram& child) const {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.ptr = &child;
        return descriptor && epoll_ctl(queue.get(), EPOLL_CTL_ADD, descriptor.get(), &event) == 0;
    }

    /// Said explicitly: a copy of the descriptor in a keeper that is just being made would keep a
    /// closed one in the queue.
    void unwatch(const FileDescriptor& descriptor) const {
        if (descriptor) {
            epoll_ctl(queue.get(), EPOLL_CTL_DEL, descriptor.get(), nullptr);
        }
    }

    /// Marks the programs that the system has news of within the time; false if it cannot say.
    bool noteNews(milliseconds time) const noexcept;

    [[nodiscard]] bool watchesAll() const noexcept {
        return std::ranges::all_of(children, [](const auto* child) { return child->watched; });
    }

    void doubtAll() const noexcept {
        std::ranges::for_each(children, [](auto* child) { child->hasNews = true; });
    }

    FileDescriptor queue;  // of the kernel
    std::vector<ChildProgram*> children;
};

bool ChildWatch::System::noteNews(milliseconds time) const noexcept {
    const SignalsOnlyWhileWaiting signals;
    if (interruption() != 0) {
        time = milliseconds::zero();
    }
    std::array<epoll_event, 64> events;  // those that do not fit are told at the next time
    const int count = epoll_pwait(queue.get(), events.data(), static_cast<int>(events.size()),
                                  timeout(time), &signals.whileWaiting());
    for (int n = 0; n < count; ++n) {
        auto* const child =
            static_cast<ChildProgram*>(events[static_cast<std::size_t>(n)].data.ptr);
        if (std::ranges::find(children, child) != children.end()) {
            child->hasNews = true;
        }
    }
    return count >= 0 || errno == EINTR;
}

ChildWatch::ChildWatch() = default;

ChildWatch::~ChildWatch() = default;

void ChildWatch::add(ChildProgram& child) {
    if (!system) {
        system = std::make_unique<System>();
        system->queue = FileDescriptor(epoll_create1(EPOLL_CLOEXEC));
    }
    system->children.push_back(&child);
    child.watched = system->watch(child.handle->keeperDescriptor, child) &&
                    system->watch(child.pipe.readHandle()->descriptor, child);
}

void ChildWatch::remove(ChildProgram& child) noexcept {
    if (!system || std::erase(system->children, &child) == 0) {
        return;
    }
    system->unwatch(child.handle->keeperDescriptor);
    system->unwatch(child.pipe.readHandle()->descriptor);
    child.watched = false;
    child.hasNews = true;
}

void ChildWatch::wait(milliseconds most) noexcept {
    if (!system || system->children.empty()) {
        return;  // where programs cannot be watched, a look may have met the end of the last
    }
    if (!system->noteNews(system->watchesAll() ? most : std::min(most, kPass))) {
        sleepMilliseconds(kPass.count());
        refresh();
    }
}

void ChildWatch::refresh() noexcept {
    if (system && !system->noteNews(milliseconds::zero())) {
        system->doubtAll();
    }
}

}  // namespace tkcore
