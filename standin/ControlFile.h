#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

enum class Comparison { kEqual, kNotEqual };

struct Condition {
    std::string field;
    Comparison comparison = Comparison::kEqual;
    std::string value;  // bytes as they stand in the file, not necessarily UTF-8
};

// Conditions that must all hold.
using ConditionGroup = std::vector<Condition>;

struct ViewBlock {
    std::size_t lineNumber = 0;  // of the keyword line, counted from 1
    std::string keyword;
    std::vector<ConditionGroup> alternatives;  // one must hold; empty lets every record through
    std::vector<std::string> fields;           // empty asks for every field of the view
};

class ControlFileError final : public std::runtime_error {
public:
    ControlFileError(std::size_t lineNumber, const std::string& text)
        : std::runtime_error("line " + std::to_string(lineNumber) + ": " + text) {}
};

// Parses the whole text of a control file, at least one block. Throws ControlFileError for any
// deviation from the format. Time and memory are linear in the text.
std::vector<ViewBlock> parseControlFile(std::string_view text);

}  // namespace standin
