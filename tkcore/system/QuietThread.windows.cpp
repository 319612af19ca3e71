#include "tkcore/system/QuietThread.h"

#include <utility>

namespace tkcore {

std::jthread startQuietThread(std::function<void()> work) {
    return std::jthread(std::move(work));  // no signals here
}

}  // namespace tkcore
