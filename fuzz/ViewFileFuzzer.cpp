// Fuzzes the reader of view files: from memory into a table, and in steps into both receivers.

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/Fuzzer.h"
#include "reader/inside/TableReceiver.h"
#include "support/SurveyRanking.h"

using namespace velextracta;

namespace {

constexpr char kPath[] = "fuzzed.txt";
constexpr std::string_view kLineEnd = "\r\n";

/// The text with a single line end in place of several, and one at its end. A table can be written
/// in this form only.
std::string canonicalText(std::string_view text) {
    std::string canonical;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find(kLineEnd));
        text.remove_prefix(std::min(text.size(), line.size() + kLineEnd.size()));
        if (!line.empty()) {
            canonical.append(line).append(kLineEnd);
        }
    }
    return canonical;
}

void writeRecord(std::string& text, char kind, const FieldList& fields) {
    text += kind;
    for (const std::string_view field : fields) {
        promise(field.find('!') == std::string_view::npos, "no field holds a !");
        promise(field.find(kLineEnd) == std::string_view::npos, "no field holds a line end");
        text.append("!").append(field);
    }
    text.append(kLineEnd);
}

std::string writtenRecords(const ExtractaViewData& table) {
    std::string text;
    writeRecord(text, 'J', table.jFields());
    for (const FieldList& record : table.records()) {
        promise(!record.empty(), "a record has at least one field");
        writeRecord(text, 'S', record);
    }
    return text;
}

/// Checks that the table has all of a complete file, byte for byte and in order.
void checkWholeFile(std::string_view text, const ExtractaViewData& table) {
    const std::string canonical = canonicalText(text);
    const std::size_t headerEnd = canonical.find(kLineEnd);
    promise(writtenRecords(table) == canonical.substr(headerEnd + kLineEnd.size()),
            "the table holds the records of the file");

    FieldList header;
    for (std::size_t start = 1; start < headerEnd;) {  // behind the A, at a !
        const std::size_t next = std::min(canonical.find('!', start + 1), headerEnd);
        header.push_back(std::string_view(canonical).substr(start + 1, next - start - 1));
        start = next;
    }
    for (const std::string_view name : header) {
        promise(table.columnIndex(name) < header.size(), "every column name has an index");
    }
}

/// The failure's text; empty on success.
std::string readFromMemory(std::string_view text, ExtractaViewData& table) {
    try {
        parseViewText(text, kPath, table);
        return {};
    } catch (const tkcore::ExtractaParserException& failure) {
        return failure.message();
    }
}

std::string readInSteps(std::string_view text, std::size_t mostAtOnce, ExtractaViewData& table) {
    ViewWindow window(inSteps(text, mostAtOnce), mostAtOnce);
    TableReceiver receiver(table);
    try {
        streamView(window, kPath, receiver);
        return {};
    } catch (const tkcore::ExtractaParserException& failure) {
        return failure.message();
    }
}

/// The ranking of a survey as rankedInSteps() gives it, computed in the simplest way.
std::string rankedFromTable(std::string_view text, const std::string& path) {
    ExtractaViewData table;
    try {
        parseViewText(text, path, table);
    } catch (const tkcore::ExtractaParserException& failure) {
        return failure.message();
    }
    const std::uint32_t column = table.columnIndex("NET_NAME");
    if (column == ExtractaViewData::kNoColumn) {
        return path + " has no NET_NAME column";
    }
    std::map<std::string, std::uint64_t, std::less<>> counts;
    for (std::size_t number = 0; number < table.records().size(); ++number) {
        const std::vector<std::string_view> fields(table.records()[number].begin(),
                                                   table.records()[number].end());
        if (fields.size() <= column) {
            return path + " record " + std::to_string(number + 1) +
                   " is too short for its NET_NAME column";
        }
        ++counts[std::string(fields[column])];
    }
    std::set<std::pair<std::uint64_t, std::string>, std::greater<>> nets;
    for (const auto& [name, count] : counts) {
        nets.emplace(count, name);
    }
    std::string ranking;
    for (const auto& [count, name] : nets) {
        ranking += std::to_string(count) + " " + name + ", ";
    }
    return ranking;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    ExtractaViewData table;
    const std::string failure = readFromMemory(text, table);
    if (failure.empty()) {
        checkWholeFile(text, table);
    }
    const std::string records = writtenRecords(table);
    const std::string ranking = rankedFromTable(text, kPath);
    for (const std::size_t mostAtOnce : {std::size_t{1}, 2 + size % 64}) {
        ExtractaViewData streamed;
        promise(readInSteps(text, mostAtOnce, streamed) == failure,
                "steps fail where the whole fails, with the same text");
        promise(writtenRecords(streamed) == records, "steps find the same records");
        promise(rankedInSteps(text, kPath, mostAtOnce) == ranking,
                "counting in steps comes to what the table says");
    }
    return 0;
}
