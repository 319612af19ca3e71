#include "tkcore/System.h"

#include <boost/thread/thread.hpp>

namespace tkcore {

unsigned hardwareThreads() noexcept {
    return boost::thread::hardware_concurrency();
}

}  // namespace tkcore
