#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velextracta {

/// Gathers the reasons of a failure while a run goes on, and tells them to a person at a terminal
/// afterwards, behind the words of the contract. Without a terminal it does nothing. The front end
/// owns it.
class Reasons final {
public:
    /// From here on it is told every text of the log's level 0.
    Reasons();
    ~Reasons();
    Reasons(const Reasons&) = delete;
    Reasons& operator=(const Reasons&) = delete;

    /// Each line of a reason on a line of its own, ten at most.
    void print() const;

private:
    void add(std::string_view reason);

    std::vector<std::string> lines;
    std::size_t leftOut = 0;
};

}  // namespace velextracta
