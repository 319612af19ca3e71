#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "executor/inside/ConnectivityMerge.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "tkcore/report/ExtractaParserException.h"

namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;
using tkcore::AString;
using tkcore::ExtractaParserException;
using tkcore::LongFileName;
using velextracta::ConnectivityMerge;

class Merge : public testing::Test {
protected:
    /// The merged text of files with these texts.
    std::string merge(const std::vector<std::string>& texts) {
        ConnectivityMerge merge(path("conn.txt"), [this](std::size_t) { ++turns; });
        for (const std::string& text : texts) {
            writeFile(directory / "piece", text);
            merge.append(path("piece"));
        }
        return readFile(directory / "conn.txt");
    }

    LongFileName path(const std::string& name) const {
        return LongFileName(AString((directory / name).string()));
    }

    const TemporaryDirectory directory;
    int turns = 0;  // calls of Meanwhile
};

TEST_F(Merge, putsTheRecordsOfAllUnderTheHeaderOfTheFirst) {
    const std::string nul("S!\0!\n\r\r\n", 8);
    // A line that ends exactly where the next part of the file begins.
    const std::string part(131'071, 'A');
    const struct {
        std::vector<std::string> pieces;
        std::string merged;
    } cases[] = {
        {{"A!F!\r\nJ!1!\r\nS!a!\r\n", "A!G!\r\nJ!2!\r\n" + nul}, "A!F!\r\nJ!1!\r\nS!a!\r\n" + nul},
        // A bare line feed ends a line as well; line ends of records stay as they are.
        {{"A!F!\nJ!1!\nS!a!\nS!b!", "A!\r\nJ!\r\nS!c!"}, "A!F!\r\nJ!1!\r\nS!a!\nS!b!S!c!"},
        {{part + "\r\nJ!1!\r\n", part + "\nJ!\r\n"}, part + "\r\nJ!1!\r\n"},
        {{part + "\r" + part + "\r\r\nJ!"}, part + "\r" + part + "\r\r\nJ!\r\n"},
        {{"A!F!\r\nJ!1!\r", "A!\r\nJ!\r\nS!a!"}, "A!F!\r\nJ!1!\r\r\nS!a!"},
        {{"", "A!\r\nJ!\r\nS!a!\r\n"}, "\r\n\r\nS!a!\r\n"},
        {{"A!F!", "x\r\ny\r\nS!a!\r\n", "A!F!\r\n"}, "A!F!\r\n\r\nS!a!\r\n"},
        {{}, ""},
    };
    for (const auto& expected : cases) {
        EXPECT_TRUE(merge(expected.pieces) == expected.merged) << expected.merged.substr(0, 100);
    }
}

TEST_F(Merge, copiesALargePieceWholeAndGivesOthersTheirTurn) {
    const std::string header(3'000'000, 'h');
    const std::string records(5'000'001, 'r');
    const std::string piece = "A!" + header + "\r\nJ!\r\n" + records;
    EXPECT_TRUE(merge({piece}) == piece);
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
            EXPECT_THAT(
                [&] { ConnectivityMerge(path(row.combined)).append(LongFileName(row.piece)); },
                ThrowsMessage<ExtractaParserException>(HasSubstr(row.message)));
        }
    }
}

}  // namespace
