#include <boost/algorithm/string/replace.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/ViewFile.h"
#include "support/TemporaryDirectory.h"
#include "tkcore/report/ExtractaParserException.h"

namespace velextracta {
namespace {

using namespace std::string_literals;

/// The J record and the S records, each with its count of fields and a "|" before each field.
std::string shown(const ExtractaViewData& data) {
    const auto showRecord = [](const FieldList& record) {
        std::string text = std::to_string(record.size());
        for (const std::string_view field : record) {
            text.append("|").append(field);
        }
        return text;
    };
    std::string text = showRecord(data.jFields());
    for (const FieldList& record : data.records()) {
        text += " ; " + showRecord(record);
    }
    return text;
}

/// What the table shows once the file is read, or the failure's message, "FILE" for the path.
std::string readFrom(const std::string& path) {
    ExtractaViewData data;
    try {
        readViewFile(path, data);
        return shown(data);
    } catch (const tkcore::ExtractaParserException& failure) {
        return boost::algorithm::replace_first_copy(std::string(failure.what()), path, "FILE");
    }
}

TEST(ViewFileReader, takesEveryByteOfAFileAsTheFormatSays) {
    const std::string kLong(200, 'n');  // a length that takes more than one byte to write down
    const std::string kHuge(3'000'000, 'h');
    const std::string kNothing =
        "FILE parsing failed after successfully parsing the first 0 S records";
    const std::pair<std::string, std::string> files[] = {
        {"A!a!\r\nJ!\r\nS!a!!b \r\nS!\r\nS! !\r\n", "1| ; 3|a||b  ; 1| ; 2| |"},
        {"A!a\r\nJ!b", "1|b"},
        {"A!a\r\n\r\n\r\nJ!b\r\n\r\nS!c\r\n\r\nS!d\r\n\r\n", "1|b ; 1|c ; 1|d"},
        // A lone CR or LF is text, and so is every other byte.
        {"A!a\r\nJ!b\nJ!c\r\nS!d\re\r!\nf\r\r\nS!g\r", "2|b\nJ|c ; 2|d\re\r|\nf\r ; 1|g\r"},
        {"A!a\r\nJ!\xff\x80\r\nS!\0!\xe4\r\n"s, "1|\xff\x80 ; 2|\0|\xe4"s},
        {"A!a\r\nJ!b\r\nS!" + kLong + "!" + kHuge + "!c\r\nS!d\r\n",
         "1|b ; 3|" + kLong + "|" + kHuge + "|c ; 1|d"},
        {"", kNothing},
        {"J!b\r\nS!c\r\n", kNothing},
        {"A!a\r\nS!c\r\n", kNothing},
        {"A!a\nJ!b\nS!c\n", kNothing},
        {"A!a\r\nJ!b\r\nS!c\r\nS!d\r\nT!e\r\n",
         "FILE parsing failed to parse whole file after "
         "successfully parsing the first 2 S records"},
    };
    const TemporaryDirectory directory;
    for (const auto& [text, expected] : files) {
        writeFile(directory / "nets.txt", text);
        EXPECT_EQ(readFrom((directory / "nets.txt").string()), expected) << text.substr(0, 40);
    }
}

TEST(ViewFileReader, namesAFileThatCannotBeRead) {
    const TemporaryDirectory directory;
    for (const auto& path : {directory.path(), directory / "absent.txt"}) {
        EXPECT_EQ(readFrom(path.string()), "Could not open file: FILE");
    }
}

TEST(ViewFileReader, givesEachColumnTheCountOfColumnsSoFar) {
    ExtractaViewData data;
    parseViewText("A!A!B!A!C!\r\nJ!\r\n", "first", data);
    parseViewText("A!D\r\nJ!\r\n", "second", data);
    const std::vector<std::pair<const char*, std::uint32_t>> columns = {
        {"A", 2}, {"B", 1}, {"C", 2}, {"", 3}, {"D", 4}, {"E", 0xFFFFFFFF}};
    for (const auto& [name, index] : columns) {
        EXPECT_EQ(data.columnIndex(name), index) << name;
    }
}

TEST(ViewFileReader, refusesATableThatHasRecordsAndLeavesItAsItWas) {
    ExtractaViewData data;
    parseViewText("A!a\r\nJ!b\r\nS!c\r\n", "first", data);
    EXPECT_THAT([&] { parseViewText("A!new\r\nJ!d\r\nS!e\r\n", "second", data); },
                testing::ThrowsMessage<tkcore::ExtractaParserException>(
                    "View Data: Cannot add header information after data has been bound."));
    EXPECT_EQ(data.columnIndex("new"), ExtractaViewData::kNoColumn);
    EXPECT_EQ(shown(data), "1|b ; 1|c");
}

}  // namespace
}  // namespace velextracta
