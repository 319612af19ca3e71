#include "reader/ViewFileDoubts.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include <boost/algorithm/string/split.hpp>
#include <boost/format.hpp>

#include "tkcore/files/InputFile.h"

namespace velextracta {

namespace {

/// A limit, because a file without line ends may be as long as the disk.
constexpr std::size_t kHeadSize = std::size_t{1} << 16U;
constexpr std::size_t kMostLines = 1000;
constexpr std::string_view kLineEnd = "\r\n";
constexpr char kFieldEnd = '!';

/// The first bytes of a file, line by line.
class Head final {
public:
    explicit Head(const tkcore::LongFileName& path) {
        tkcore::InputFile file(path);
        file.requireFile();
        bytes.resize(kHeadSize);
        bytes.resize(file.read(bytes.data(), bytes.size()));
        rest = bytes;
    }
    Head(const Head&) = delete;
    Head& operator=(const Head&) = delete;

    /// Whether the lines not yet taken start with the text.
    [[nodiscard]] bool startsWith(std::string_view text) const { return rest.starts_with(text); }

    /// The next line without its end; none if there is no more, or if the head cuts it off.
    std::optional<std::string_view> takeLine() {
        const std::size_t end = rest.find(kLineEnd);
        const bool isCutOff = end == std::string_view::npos && bytes.size() == kHeadSize;
        if (rest.empty() || isCutOff) {
            return {};
        }
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(rest.size(), line.size() + kLineEnd.size()));
        ++taken;
        return line;
    }

    /// The number of lines taken.
    [[nodiscard]] std::size_t lineNumber() const { return taken; }

    [[nodiscard]] bool endsLinesWithLineFeed() const {
        const std::size_t end = bytes.find('\n');
        return end != std::string::npos && !std::string_view(bytes).substr(0, end).ends_with('\r');
    }

private:
    std::string bytes;
    std::string_view rest;
    std::size_t taken = 0;
};

std::string shown(std::string_view name) {
    constexpr std::size_t kLongest = 80;
    return '"' + std::string(name.substr(0, kLongest)) + (name.size() > kLongest ? "...\"" : "\"");
}

/// The first difference between the fields that an A! line names and those asked for.
std::string doubtAboutColumns(std::string_view names, const std::vector<std::string>& fields) {
    std::vector<std::string_view> columns;
    boost::split(columns, names, [](char c) { return c == kFieldEnd; });
    if (columns.back().empty()) {
        columns.pop_back();  // the empty column behind the last "!"
    }
    const auto [column, field] = std::ranges::mismatch(columns, fields);
    const auto number = column - columns.begin() + 1;
    if (column == columns.end() && field == fields.end()) {
        return "";
    }
    const std::string found = column == columns.end() ? "missing" : shown(*column);
    const std::string asked = field == fields.end() ? "no more" : shown(*field);
    return (boost::format("column %d of its A! line is %s, asked for was %s") % number % found %
            asked)
        .str();
}

/// The number of fields of an A! line or a record, with the empty field behind a last "!".
std::size_t fieldCount(std::string_view record) {
    return static_cast<std::size_t>(std::ranges::count(record, kFieldEnd));
}

/// Checks the lines after the first two; header is the A! line.
std::string doubtAboutRecords(Head& head, std::string_view header) {
    std::size_t records = 0;
    std::size_t differing = 0;
    std::string first;
    while (head.lineNumber() < kMostLines) {
        const std::optional<std::string_view> line = head.takeLine();
        if (!line) {
            break;
        }
        if (line->empty()) {
            continue;
        }
        ++records;
        const bool isRecord = line->starts_with("S!");
        if (isRecord && fieldCount(*line) == fieldCount(header)) {
            continue;
        }
        if (differing++ == 0) {
            first = (boost::format("line %d ") % head.lineNumber()).str();
            first += isRecord ? (boost::format("has %d") % fieldCount(*line)).str()
                              : "does not begin with S!";
        }
    }
    if (differing == 0) {
        return "";
    }
    return (boost::format(
                "%d of its first %d records have not as many fields as its A! line, which "
                "has %d%s: %s") %
            differing % records % fieldCount(header) %
            (header.ends_with(kFieldEnd) ? " with the empty one behind the last !" : "") % first)
        .str();
}

}  // namespace

std::vector<std::string> doubtsAboutViewFile(const tkcore::LongFileName& path,
                                             const std::vector<std::string>& fields) {
    std::vector<std::string> doubts;
    const auto add = [&](std::string doubt) {
        if (!doubt.empty()) {
            doubts.push_back(std::move(doubt));
        }
    };
    try {
        Head head(path);
        const bool hasHeader = head.startsWith("A!");
        const std::string_view header = head.takeLine().value_or("");
        if (!hasHeader || !head.startsWith("J!")) {
            return {hasHeader && head.endsLinesWithLineFeed()
                        ? "its lines end with LF, not with CR LF"
                        : "its first two lines do not begin with A! and J!"};
        }
        if (!fields.empty()) {
            add(doubtAboutColumns(header.substr(2), fields));
        }
        head.takeLine();
        add(doubtAboutRecords(head, header));
    } catch (const std::system_error& error) {
        add(error.what());
    }
    return doubts;
}

}  // namespace velextracta
