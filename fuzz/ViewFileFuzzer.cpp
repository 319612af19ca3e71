// The reader of view files and the ranking of nets that is made from what it read.

#include <set>
#include <string>
#include <string_view>

#include "executor/inside/NetRanking.h"
#include "fuzz/Fuzzer.h"
#include "reader/ViewFile.h"
#include "tkcore/report/ExtractaParserException.h"

using namespace velextracta;

namespace {

constexpr char kPath[] = "fuzzed.txt";
constexpr std::string_view kLineEnd = "\r\n";

/// The text with each run of line ends made one, and one at its end: the spelling that can be
/// written again from a table.
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

/// All that stands in a whole file is in its table, byte for byte and in order.
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

void checkRanking(const ExtractaViewData& survey) {
    std::vector<RankedNet> ranking;
    try {
        ranking = rankNets(survey, kPath);
    } catch (const tkcore::ExtractaParserException&) {
        return;
    }
    std::uint64_t recordCount = 0;
    for (std::size_t rank = 0; rank < ranking.size(); ++rank) {
        recordCount += ranking[rank].recordCount;
        promise(rank == 0 || ranking[rank - 1].recordCount > ranking[rank].recordCount ||
                    (ranking[rank - 1].recordCount == ranking[rank].recordCount &&
                     ranking[rank - 1].netName > ranking[rank].netName),
                "each net ranks once, behind those with more records or a greater name");
    }
    promise(recordCount == survey.records().size(), "every record counts for one net");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    ExtractaViewData table;
    bool isWhole = true;
    try {
        parseViewText(text, kPath, table);
    } catch (const tkcore::ExtractaParserException&) {
        isWhole = false;
    }
    if (isWhole) {
        checkWholeFile(text, table);
    } else {
        writtenRecords(table);  // what was understood by then is sound as well
    }
    checkRanking(table);
    return 0;
}
