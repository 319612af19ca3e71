#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velextracta {

/// Prints warnings on the terminal at once, as well as an uncaught exception. Collects the reasons
/// of a failure during a run and prints them afterwards, after the outcome line. Does nothing
/// without a terminal. The front end owns it.
class Reasons final {
public:
    /// Listens to every text of the log's level 0 from here on.
    Reasons();
    ~Reasons();
    Reasons(const Reasons&) = delete;
    Reasons& operator=(const Reasons&) = delete;

    /// Prints ten lines at most.
    void print() const;

private:
    void add(std::string_view reason);

    std::vector<std::string> lines;
    std::size_t leftOut = 0;
};

}  // namespace velextracta
