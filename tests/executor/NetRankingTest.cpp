#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "executor/NetRanking.h"
#include "support/ReadText.h"

namespace velextracta {
namespace {

using Ranking = std::vector<std::pair<std::uint64_t, std::string>>;

Ranking rank(const std::string& text) {
    ExtractaViewData survey;
    EXPECT_EQ(readText(text, survey), "");
    Ranking ranking;
    for (const RankedNet& net : rankNets(survey, "nets.txt")) {
        ranking.emplace_back(net.recordCount, net.netName);
    }
    return ranking;
}

TEST(NetRanking, putsMoreRecordsFirstAndOfEquallyManyTheGreaterName) {
    EXPECT_EQ(rank("A!NET_NAME!\r\nJ!\r\nS!A!\r\nS!b!\r\nS!GND!\r\nS!\xe4!\r\nS!GND!\r\nS!!\r\n"
                   "S!AB!\r\n"),
              (Ranking{{2, "GND"}, {1, "\xe4"}, {1, "b"}, {1, "AB"}, {1, "A"}, {1, ""}}));
}

TEST(NetRanking, countsInTheColumnTheHeaderNames) {
    EXPECT_EQ(rank("A!LAYER!NET_NAME\r\nJ!\r\nS!TOP!GND\r\nS!BOTTOM!GND!more\r\n"),
              (Ranking{{2, "GND"}}));
}

TEST(NetRanking, isEmptyWithoutRecords) {
    EXPECT_EQ(rank("A!NET_NAME!\r\nJ!\r\n"), Ranking{});
}

TEST(NetRanking, refusesASurveyItCannotCount) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"A!LAYER!\r\nJ!\r\n", "nets.txt has no NET_NAME column"},
        {"A!LAYER!NET_NAME\r\nJ!\r\nS!TOP!GND\r\nS!TOP\r\n",
         "nets.txt record 2 is too short for its NET_NAME column"},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_THAT([survey = text] { rank(survey); },
                    testing::ThrowsMessage<tkcore::ExtractaParserException>(message));
    }
}

}  // namespace
}  // namespace velextracta
