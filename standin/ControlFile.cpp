#include "standin/ControlFile.h"

#include <algorithm>

namespace standin {
namespace {

constexpr std::string_view kAlternativeLine = "\tOR";
constexpr std::string_view kLoneTabLine = "\t";

bool isName(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
        return (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9') ||
               character == '_';
    });
}

// A shortened line for an error text, as a net name may be long.
std::string shown(std::string_view line) {
    constexpr std::size_t kLongest = 80;
    std::string text = "\"";
    text.append(line.substr(0, kLongest)).append(line.size() > kLongest ? "...\"" : "\"");
    return text;
}

// Walks the text line by line and counts the lines.
class LineCursor final {
public:
    explicit LineCursor(std::string_view text) : rest(text) { readLine(); }

    [[nodiscard]] bool atEnd() const { return ended; }
    [[nodiscard]] std::size_t lineNumber() const { return number; }

    [[nodiscard]] std::string_view peek() const {
        if (ended) {
            fail("the file ends inside a view block");
        }
        return line;
    }

    std::string_view take() {
        const std::string_view taken = peek();
        readLine();
        return taken;
    }

    void expect(std::string_view wanted, const std::string& complaint) {
        if (peek() != wanted) {
            fail(complaint + ", found " + shown(line));
        }
        readLine();
    }

    [[noreturn]] void fail(const std::string& text) const { throw ControlFileError(number, text); }

private:
    void readLine() {
        ++number;
        ended = rest.empty();
        if (ended) {
            return;
        }
        const std::size_t lineFeed = rest.find('\n');
        if (lineFeed == std::string_view::npos) {
            fail("the last line does not end with CR LF");
        }
        line = rest.substr(0, lineFeed);
        rest.remove_prefix(lineFeed + 1);
        if (line.empty() || line.back() != '\r') {
            fail("the line ends with a bare line feed, not with CR LF");
        }
        line.remove_suffix(1);
        if (line.find('\r') != std::string_view::npos) {
            fail("a carriage return stands inside the line");
        }
    }

    std::string_view rest;
    std::string_view line;
    std::size_t number = 0;
    bool ended = false;
};

// "FIELD = 'x'", "FIELD ='x'", the same with "!=", or "FIELD = x".
Condition parseCondition(const LineCursor& lines, std::string_view text) {
    const auto malformed = [&](const std::string& why) {
        lines.fail("malformed condition " + shown(text) + ": " + why);
    };
    const std::size_t blank = text.find(' ');
    const std::string_view field = text.substr(0, blank);
    if (blank == std::string_view::npos || !isName(field)) {
        malformed("a field name and a blank must come first");
    }
    std::string_view rest = text.substr(blank + 1);
    const bool notEqual = rest.starts_with("!=");
    if (!notEqual && !rest.starts_with("=")) {
        malformed("the operator must be = or !=");
    }
    rest.remove_prefix(notEqual ? 2 : 1);
    const bool spaced = rest.starts_with(' ');
    rest.remove_prefix(spaced ? 1 : 0);

    if (rest.starts_with('\'')) {
        // Quotes inside a net name are not escaped, so the literal ends only with the line.
        if (rest.size() < 2 || !rest.ends_with('\'')) {
            malformed("the closing quote must end the line");
        }
        rest = rest.substr(1, rest.size() - 2);
    } else if (notEqual || !spaced || rest.empty() || rest.starts_with(' ')) {
        malformed("a value without quotes is written FIELD = VALUE");
    }
    return {std::string(field), notEqual ? Comparison::kNotEqual : Comparison::kEqual,
            std::string(rest)};
}

ConditionGroup parseConditionGroup(LineCursor& lines) {
    ConditionGroup group;
    while (lines.peek().starts_with('\t') && lines.peek() != kAlternativeLine) {
        if (lines.peek() == kLoneTabLine) {
            if (group.size() != 1) {
                lines.fail("a lone tab may only follow a single alternative");
            }
            lines.take();
            return group;
        }
        group.push_back(parseCondition(lines, lines.peek().substr(1)));
        lines.take();
    }
    if (group.empty()) {
        lines.fail("a condition is missing");
    }
    // An alternative is never the whole of its group: conditions or a lone tab come after it.
    if (group.size() == 1 && lines.peek() == kAlternativeLine) {
        lines.fail("an alternative needs conditions or a lone tab after it");
    }
    return group;
}

std::vector<ConditionGroup> parseFilters(LineCursor& lines) {
    std::vector<ConditionGroup> alternatives{parseConditionGroup(lines)};
    while (lines.peek() == kAlternativeLine) {
        lines.take();
        alternatives.push_back(parseConditionGroup(lines));
    }
    lines.expect("", "expected an empty line after the filters");
    return alternatives;
}

std::vector<std::string> parseFields(LineCursor& lines) {
    std::vector<std::string> fields;
    if (lines.peek() == kLoneTabLine) {
        lines.take();
        return fields;
    }
    while (lines.peek().starts_with('\t')) {
        const std::string_view field = lines.peek().substr(1);
        if (!isName(field)) {
            lines.fail("expected a field name, found " + shown(field));
        }
        fields.emplace_back(field);
        lines.take();
    }
    if (fields.empty()) {
        lines.fail("expected a line led by a tab, found " + shown(lines.peek()));
    }
    lines.expect("", "expected an empty line after the fields");
    return fields;
}

bool atFilters(const LineCursor& lines) {
    const std::string_view line = lines.peek();
    return line.starts_with('\t') && line != kLoneTabLine &&
           (line == kAlternativeLine || !isName(line.substr(1)));
}

ViewBlock parseViewBlock(LineCursor& lines) {
    ViewBlock block;
    block.lineNumber = lines.lineNumber();
    if (!isName(lines.peek())) {
        lines.fail("expected a view keyword, found " + shown(lines.peek()));
    }
    block.keyword = lines.take();
    lines.expect("", "expected an empty line after the view keyword");
    if (atFilters(lines)) {
        block.alternatives = parseFilters(lines);
    }
    block.fields = parseFields(lines);
    lines.expect("END", "expected END");
    lines.expect("", "expected an empty line after END");
    return block;
}

}  // namespace

std::vector<ViewBlock> parseControlFile(std::string_view text) {
    LineCursor lines(text);
    if (lines.atEnd()) {
        lines.fail("the file holds no view block");
    }
    std::vector<ViewBlock> blocks;
    while (!lines.atEnd()) {
        blocks.push_back(parseViewBlock(lines));
    }
    return blocks;
}

}  // namespace standin
