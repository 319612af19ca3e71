#include <cstdlib>

#include <boost/thread/thread.hpp>

// Loaded before the program, makes it see a machine with as many hardware threads as a test wants.

unsigned boost::thread::hardware_concurrency() noexcept {
    const char* threads = std::getenv("HARDWARE_THREADS");
    return threads == nullptr ? 0 : static_cast<unsigned>(std::strtoul(threads, nullptr, 10));
}
