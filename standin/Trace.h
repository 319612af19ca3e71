#pragma once

#include <string>
#include <string_view>

namespace standin {

// Tells the file named by EXTRACTA_STANDIN_TRACE when this process started and ended. A process
// that is killed leaves no "end" line. Without the variable nothing is written.
class Trace final {
public:
    explicit Trace(std::string name);
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    // Appends "EVENT NAME PID NANOSECONDS"; the clock is monotonic and the same for all processes.
    void report(std::string_view event) const;

private:
    std::string name;
    std::string path;
};

}  // namespace standin
