#include "tkcore/programs/ChildWatch.h"

#include "tkcore/programs/ChildProgram.h"
#include "tkcore/system/System.h"

// The system can wait for at most 64 programs, and not for a pipe. So every look asks the system.

namespace tkcore {

struct ChildWatch::System final {};

ChildWatch::ChildWatch() = default;

ChildWatch::~ChildWatch() = default;

void ChildWatch::add(ChildProgram& child) {
    child.watched = false;
    child.hasNews = true;
}

void ChildWatch::remove(ChildProgram& /*child*/) noexcept {}

void ChildWatch::wait(std::chrono::milliseconds /*most*/) noexcept {
    sleepMilliseconds(1);
}

void ChildWatch::refresh() noexcept {}

}  // namespace tkcore
