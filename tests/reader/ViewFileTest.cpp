#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/ViewFile.h"
#include "support/ReadText.h"

namespace velextracta {
namespace {

using namespace std::string_literals;

const std::string kLong(200, 'n');  // a length that takes more than one byte to write down
const std::string kHuge(3'000'000, 'h');

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

struct FileCase {
    const char* name;
    std::string text;
    std::string expected;  // what the table shows, or the failure's message
};

const std::string kNothing = "FILE parsing failed after successfully parsing the first 0 S records";
const std::vector<FileCase> kFiles = {
    {"KeepsTheEmptyFieldBehindATrailingMark", "A!NET_NAME!\r\nJ!x!\r\nS!GND!\r\nS!VCC!\r\n",
     "2|x| ; 2|GND| ; 2|VCC|"},
    {"KeepsEmptyFieldsAndBlanks", "A!a\r\nJ!\r\nS!a!!b \r\nS!\r\nS! !\r\n",
     "1| ; 3|a||b  ; 1| ; 2| |"},
    {"NeedsNoRecordsAndNoLastLineEnd", "A!a\r\nJ!b", "1|b"},
    {"SkipsBlankLines", "A!a\r\n\r\n\r\nJ!b\r\n\r\nS!c\r\n\r\nS!d\r\n\r\n", "1|b ; 1|c ; 1|d"},
    {"TakesALoneCarriageReturnOrLineFeedForText", "A!a\r\nJ!b\nJ!c\r\nS!d\re\r!\nf\r\r\nS!g\r",
     "2|b\nJ|c ; 2|d\re\r|\nf\r ; 1|g\r"},
    {"TakesEveryOtherByteForText", "A!a\r\nJ!\xff\x80\r\nS!\0!\xe4\r\n"s,
     "1|\xff\x80 ; 2|\0|\xe4"s},
    {"KeepsLongFields", "A!a\r\nJ!b\r\nS!" + kLong + "!" + kHuge + "!c\r\nS!d\r\n",
     "1|b ; 3|" + kLong + "|" + kHuge + "|c ; 1|d"},
    {"RefusesAnEmptyFile", "", kNothing},
    {"RefusesAFileWithoutAHeader", "J!b\r\nS!c\r\n", kNothing},
    {"RefusesAFileWithoutAJRecord", "A!a\r\nS!c\r\n", kNothing},
    {"RefusesAFileWithBareLineFeeds", "A!a\nJ!b\nS!c\n", kNothing},
    {"RefusesAFileWithABrokenFirstRecord", "A!a\r\nJ!b\r\nS",
     "FILE parsing failed to parse whole file after successfully parsing the first 0 S records"},
    {"RefusesAFileWithAnotherRecordBehind", "A!a\r\nJ!b\r\nS!c\r\nS!d\r\nT!e\r\n",
     "FILE parsing failed to parse whole file after successfully parsing the first 2 S records"},
};

TEST(ViewFileReader, takesEveryByteOfAFileAsTheFormatSays) {
    for (const FileCase& file : kFiles) {
        ExtractaViewData data;
        const std::string failure = readText(file.text, data);
        EXPECT_EQ(failure.empty() ? shown(data) : failure, file.expected) << file.name;
    }
}

TEST(ViewFileReader, namesAFileThatCannotBeRead) {
    const TemporaryDirectory directory;
    ExtractaViewData data;
    for (const auto& path : {directory.path(), directory / "absent.txt"}) {
        EXPECT_THAT([&] { readViewFile(path.string(), data); },
                    testing::ThrowsMessage<tkcore::ExtractaParserException>(
                        "Could not open file: " + path.string()));
    }
}

TEST(ViewFileReader, givesEachColumnTheCountOfColumnsSoFar) {
    ExtractaViewData data;
    ASSERT_EQ(readText("A!A!B!A!C!\r\nJ!\r\n", data), "");
    ASSERT_EQ(readText("A!D\r\nJ!\r\n", data), "");
    const std::vector<std::pair<const char*, std::uint32_t>> columns = {
        {"A", 2}, {"B", 1}, {"C", 2}, {"", 3}, {"D", 4}, {"E", 0xFFFFFFFF}};
    for (const auto& [name, index] : columns) {
        EXPECT_EQ(data.columnIndex(name), index) << name;
    }
}

TEST(ViewFileReader, refusesATableThatHasRecordsAndLeavesItAsItWas) {
    ExtractaViewData data;
    ASSERT_EQ(readText("A!a\r\nJ!b\r\nS!c\r\n", data), "");
    EXPECT_EQ(readText("A!new\r\nJ!d\r\nS!e\r\n", data),
              "View Data: Cannot add header information after data has been bound.");
    EXPECT_EQ(data.columnIndex("new"), ExtractaViewData::kNoColumn);
    EXPECT_EQ(shown(data), "1|b ; 1|c");
}

}  // namespace
}  // namespace velextracta
