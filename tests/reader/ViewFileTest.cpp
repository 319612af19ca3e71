#include <cstdlib>
#include <functional>
#include <thread>

#include <boost/algorithm/string/replace.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/ViewFile.h"
#include "reader/inside/TableReceiver.h"
#include "support/BlockSource.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "tkcore/report/ExtractaParserException.h"
#include "tkcore/system/Interruption.h"

namespace velextracta {
namespace {

using namespace std::string_literals;

/// The J record and the S records, each with its number of fields and a "|" before each field.
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

/// The table's content after reading, or the failure's message with "FILE" in place of the path.
std::string outcome(const std::string& path, const std::function<void(ExtractaViewData&)>& read) {
    ExtractaViewData data;
    try {
        read(data);
        return shown(data);
    } catch (const tkcore::ExtractaParserException& failure) {
        return boost::algorithm::replace_first_copy(std::string(failure.what()), path, "FILE");
    }
}

std::string readFrom(const std::string& path) {
    return outcome(path, [&](ExtractaViewData& data) { readViewFile(path, data); });
}

std::string streamFrom(const std::string& path) {
    return outcome(path, [&](ExtractaViewData& data) {
        TableReceiver receiver(data);
        streamViewFile(tkcore::LongFileName(path), receiver);
    });
}

std::string streamInSteps(const std::string& text, std::size_t mostAtOnce) {
    return outcome("FILE", [&](ExtractaViewData& data) {
        ViewWindow window(inSteps(text, mostAtOnce), mostAtOnce);
        TableReceiver receiver(data);
        streamView(window, "FILE", receiver);
    });
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
        EXPECT_EQ(streamFrom((directory / "nets.txt").string()), expected) << text.substr(0, 40);
        for (const std::size_t mostAtOnce : {1, 2, 3, 7, 1000}) {
            EXPECT_EQ(streamInSteps(text, mostAtOnce), expected) << text.substr(0, 40);
        }
    }
}

TEST(ViewFileReader, namesAFileThatCannotBeRead) {
    const TemporaryDirectory directory;
    makeFifo(directory / "pipe");
    for (const auto& path : {directory.path(), directory / "absent.txt", directory / "pipe"}) {
        EXPECT_EQ(readFrom(path.string()), "Could not open file: FILE");
        EXPECT_EQ(streamFrom(path.string()), "Could not open file: FILE");
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

/// A file of several blocks that changes after the first block is read.
class StreamedFile : public testing::Test {
protected:
    static constexpr std::size_t kRecords = 50'000;
    static constexpr std::string_view kHeader = "A!NET_NAME!\r\nJ!x!\r\n";
    static constexpr std::string_view kRecord = "S!GND!\r\n";

    class Receiver final : public ViewReceiver {
    public:
        explicit Receiver(std::function<void()> whatHappens) : happen(std::move(whatHappens)) {}
        void addColumns(const FieldList& /*names*/) override {}
        void setJRecord(FieldList& /*fields*/) override { happen(); }
        void addSRecord(FieldList& /*fields*/) override { ++records; }
        std::uint64_t recordCount() const override { return records; }

    private:
        const std::function<void()> happen;
        std::uint64_t records = 0;
    };

    void SetUp() override {
        std::string text(kHeader);
        for (std::size_t record = 0; record < kRecords; ++record) {
            text += kRecord;
        }
        writeFile(file, text);
    }

    const TemporaryDirectory directory;
    const std::filesystem::path file = directory / "nets.txt";
};

TEST_F(StreamedFile, isReadAsFarAsItWentAndStillGoes) {
    Receiver untilThen([&] { std::ofstream(file, std::ios::app) << "no record"; });
    streamViewFile(tkcore::LongFileName(file.string()), untilThen);
    EXPECT_EQ(untilThen.recordCount(), kRecords);

    constexpr std::size_t kLeft = kRecords - 9;
    Receiver untilNow(
        [&] { std::filesystem::resize_file(file, kHeader.size() + kLeft * kRecord.size()); });
    streamViewFile(tkcore::LongFileName(file.string()), untilNow);
    EXPECT_EQ(untilNow.recordCount(), kLeft);
}

TEST_F(StreamedFile, isReadNoFurtherAfterAnInterruption) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto readInterrupted = [&] {
        tkcore::noteInterruptions();
        Receiver receiver([] {
            interruptThisProcess();
            while (tkcore::interruption() == 0) {
                std::this_thread::yield();
            }
        });
        int code = 2;
        try {
            streamViewFile(tkcore::LongFileName(file.string()), receiver);
        } catch (const tkcore::Interrupted&) {
            code = receiver.recordCount() < kRecords / 2 ? 0 : 1;
        }
        // This process has made its own directory, whose destructor does not run.
        std::filesystem::remove_all(directory.path());
        std::_Exit(code);
    };
    EXPECT_EXIT(readInterrupted(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace velextracta
