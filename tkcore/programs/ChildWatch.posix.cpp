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

/// The pause between two looks at a program that cannot be watched.
constexpr milliseconds kPass{1};

/// Lets signals in only during the wait. Otherwise a signal after the last check for a request to
/// end, but before the wait, would not end the wait.
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

/// The time in the system's form: without limit if it is too long for that form.
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

    /// Closing the descriptor is not enough: if a keeper is just being made, it has a copy, which
    /// would keep the descriptor in the queue.
    void unwatch(const FileDescriptor& descriptor) const {
        if (descriptor) {
            epoll_ctl(queue.get(), EPOLL_CTL_DEL, descriptor.get(), nullptr);
        }
    }

    /// Marks the programs of which the system has news within the time; false on a failure.
    bool noteNews(milliseconds time) const noexcept;

    [[nodiscard]] bool watchesAll() const noexcept {
        return std::ranges::all_of(children, [](const auto* child) { return child->watched; });
    }

    void doubtAll() const noexcept {
        std::ranges::for_each(children, [](auto* child) { child->hasNews = true; });
    }

    FileDescriptor queue;  // an epoll instance
    std::vector<ChildProgram*> children;
};

bool ChildWatch::System::noteNews(milliseconds time) const noexcept {
    const SignalsOnlyWhileWaiting signals;
    if (interruption() != 0) {
        time = milliseconds::zero();
    }
    std::array<epoll_event, 64> events;  // events that do not fit come at the next wait
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
        return;  // without a watch, a look may have found the end of the last program
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
