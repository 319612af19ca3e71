#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "executor/ConnectivityMerge.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "tkcore/ExtractaParserException.h"

namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;
using tkcore::AString;
using tkcore::ExtractaParserException;
using velextracta::ConnectivityMerge;

class Merge : public testing::Test {
protected:
    /// Merges files of these texts; the number of those whose header is doubted.
    int merge(const std::vector<std::string>& texts) {
        ConnectivityMerge merge(path("conn.txt"), [this](std::size_t) { ++turns; });
        int doubts = 0;
        for (const std::string& text : texts) {
            writeFile(directory / "piece", text);
            doubts += merge.append(path("piece")).empty() ? 0 : 1;
        }
        return doubts;
    }

    AString path(const std::string& name) const { return (directory / name).string(); }

    const TemporaryDirectory directory;
    int turns = 0;  // that others were given meanwhile
};

TEST_F(Merge, putsTheRecordsOfAllUnderTheHeaderOfTheFirst) {
    const std::string nul("S!\0!\n\r\r\n", 8);
    const struct {
        std::vector<std::string> pieces;
        std::string merged;
        int doubts;
    } cases[] = {
        {{"A!F!\r\nJ!1!\r\nS!a!\r\n", "A!G!\r\nJ!2!\r\n" + nul},
         "A!F!\r\nJ!1!\r\nS!a!\r\n" + nul,
         0},
        // A bare line feed ends a line as well; line ends of records stay as they are.
        {{"A!F!\nJ!1!\nS!a!\nS!b!", "A!\r\nJ!\r\nS!c!"}, "A!F!\r\nJ!1!\r\nS!a!\nS!b!S!c!", 0},
        {{"", "A!\r\nJ!\r\nS!a!\r\n"}, "\r\n\r\nS!a!\r\n", 1},
        {{"A!F!", "x\r\ny\r\nS!a!\r\n", "A!F!\r\n"}, "A!F!\r\n\r\nS!a!\r\n", 3},
        {{}, "", 0},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(merge(expected.pieces), expected.doubts) << expected.merged;
        EXPECT_EQ(readFile(directory / "conn.txt"), expected.merged);
    }
}

TEST_F(Merge, copiesALargePieceWholeAndGivesOthersTheirTurn) {
    const std::string header(3'000'000, 'h');
    const std::string records(5'000'001, 'r');
    EXPECT_EQ(merge({"A!" + header + "\r\nJ!\r\n" + records}), 0);
    EXPECT_EQ(readFile(directory / "conn.txt"), "A!" + header + "\r\nJ!\r\n" + records);
    EXPECT_GE(turns, 5);
}

TEST_F(Merge, namesThePieceThatItCannotAdd) {
    writeFile(directory / "piece", "A!\r\nJ!\r\nS!\r\n");
    const std::string piece = (directory / "piece").string();
    const std::string start = "createExtractaControlFileAndViewsMP ";
    const struct {
        const char* combined;
        std::string piece;
        std::string message;
        On system = On::kBoth;
    } cases[] = {
        {"conn.txt", piece + "0", start + "failed to open file " + piece + "0"},
        {"conn.txt", directory.path().string(), "open"},
        // Its first byte cannot be read.
        {"conn.txt", "/proc/self/mem", start + "missing header in file /proc/self/mem", On::kPosix},
        {"no/conn.txt", piece, start + "error adding " + piece + " to combined connectivity file"},
    };
    for (const auto& row : cases) {
        if (isHere(row.system)) {
            EXPECT_THAT([&] { ConnectivityMerge(path(row.combined)).append(row.piece); },
                        ThrowsMessage<ExtractaParserException>(HasSubstr(row.message)));
        }
    }
}

}  // namespace
