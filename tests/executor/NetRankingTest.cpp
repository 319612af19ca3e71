#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "executor/inside/NetRanking.h"
#include "reader/ViewFile.h"
#include "tkcore/report/ExtractaParserException.h"

namespace velextracta {
namespace {

std::string rank(const std::string& records) {
    ExtractaViewData survey;
    parseViewText("A!LAYER!NET_NAME\r\nJ!\r\n" + records, "nets.txt", survey);
    std::string ranking;
    for (const RankedNet& net : rankNets(survey, "nets.txt")) {
        ranking += std::to_string(net.recordCount) + " " + net.netName + ", ";
    }
    return ranking;
}

TEST(NetRanking, putsMoreRecordsFirstAndOfEquallyManyTheGreaterName) {
    EXPECT_EQ(rank("S!T!A\r\nS!T!b\r\nS!T!GND\r\nS!T!\xe4\r\nS!B!GND!more\r\nS!T!\r\nS!T!AB\r\n"),
              "2 GND, 1 \xe4, 1 b, 1 AB, 1 A, 1 , ");
}

TEST(NetRanking, namesTheRecordThatItCannotCount) {
    EXPECT_THAT([] { rank("S!TOP!GND\r\nS!TOP\r\n"); },
                testing::ThrowsMessage<tkcore::ExtractaParserException>(
                    "nets.txt record 2 is too short for its NET_NAME column"));
}

}  // namespace
}  // namespace velextracta
