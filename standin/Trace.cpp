#include "standin/Trace.h"

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "standin/System.h"

namespace standin {

void reportToTrace(std::string_view event, const std::string& name) {
    const char* requested = std::getenv("EXTRACTA_STANDIN_TRACE");
    const std::string path = requested == nullptr ? "" : requested;
    if (path.empty()) {
        return;
    }
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const std::string line =
        std::string(event) + ' ' + name + ' ' + std::to_string(processNumber()) + ' ' +
        std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()) + '\n';
    WritableFile file(path, WritableFile::Mode::kAppend);
    if (!file.isOpen() || !file.write(line)) {
        throw std::runtime_error(path + ": cannot append to the trace");
    }
}

Trace::Trace(std::string processName) : name(std::move(processName)) {
    reportToTrace("start", name);
}

Trace::~Trace() {
    try {
        reportToTrace("end", name);
    } catch (const std::exception&) {
        // The start line is there; readers notice that the end is missing.
        return;
    }
}

}  // namespace standin
