#pragma once

#include <string>
#include <string_view>

namespace standin {

// Appends "EVENT NAME PID NANOSECONDS" to the file named by EXTRACTA_STANDIN_TRACE, if there is
// that variable; the clock is monotonic and the same for all processes.
void reportToTrace(std::string_view event, const std::string& name);

// Tells the trace when this process started and ended. A process that is killed leaves no "end"
// line.
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
