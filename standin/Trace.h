#pragma once

#include <string>
#include <string_view>

namespace standin {

// Appends "EVENT NAME PID NANOSECONDS" to the file in EXTRACTA_STANDIN_TRACE, if that variable is
// set. The clock is monotonic and the same for all processes.
void reportToTrace(std::string_view event, const std::string& name);

// Writes the start and the end of this process to the trace. A killed process leaves no "end" line.
class Trace final {
public:
    explicit Trace(std::string name);
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    [[nodiscard]] const std::string& processName() const { return name; }

private:
    std::string name;
};

}  // namespace standin
