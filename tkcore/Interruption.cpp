#include "tkcore/Interruption.h"

#include <string>

namespace tkcore {

Interrupted::Interrupted(int signal)
    : std::runtime_error("interrupted by signal " + std::to_string(signal)) {}

void throwIfInterrupted() {
    if (const int signal = interruption(); signal != 0) {
        throw Interrupted(signal);
    }
}

}  // namespace tkcore
