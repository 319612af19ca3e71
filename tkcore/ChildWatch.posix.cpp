#include "tkcore/ChildWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <vector>

#include <sys/epoll.h>

#include "tkcore/ChildProgram.h"
#include "tkcore/FileDescriptor.posix.h"
#include "tkcore/PipeEnd.posix.h"
#include "tkcore/StartedProcess.posix.h"
#include "tkcore/System.h"

namespace tkcore {

namespace {

constexpr int kPassMilliseconds = 1;

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
    bool noteNews(int milliseconds) const noexcept;

    void doubtAll() const noexcept {
        std::ranges::for_each(children, [](auto* child) { child->hasNews = true; });
    }

    FileDescriptor queue;  // of the kernel
    std::vector<ChildProgram*> children;
};

bool ChildWatch::System::noteNews(int milliseconds) const noexcept {
    std::array<epoll_event, 64> events;  // those that do not fit are told at the next time
    const int count =
        epoll_wait(queue.get(), events.data(), static_cast<int>(events.size()), milliseconds);
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

void ChildWatch::wait() noexcept {
    if (!system) {
        sleepMilliseconds(kPassMilliseconds);
    } else if (!system->noteNews(kPassMilliseconds)) {
        sleepMilliseconds(kPassMilliseconds);
        system->doubtAll();
    }
}

void ChildWatch::refresh() noexcept {
    if (system && !system->noteNews(0)) {
        system->doubtAll();
    }
}

}  // namespace tkcore
