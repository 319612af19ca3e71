#include <gtest/gtest.h>

#include "support/SurveyRanking.h"

namespace velextracta {
namespace {

using namespace std::string_literals;

/// Expects the ranking whatever the size of the reading steps.
void expectRanking(const std::string& survey, const std::string& ranking) {
    for (std::size_t mostAtOnce = 1; mostAtOnce <= survey.size() + 1; ++mostAtOnce) {
        EXPECT_EQ(rankedInSteps(survey, "nets.txt", mostAtOnce), ranking)
            << survey << mostAtOnce << " bytes at once";
    }
}

TEST(NetRanking, putsMoreRecordsFirstAndOfEquallyManyTheGreaterName) {
    const std::string longName(40, 'n');
    const std::pair<std::string, std::string> surveys[] = {
        {"A!LAYER!NET_NAME\r\nJ!\r\nS!T!A\r\nS!T!b\r\nS!T!GND\r\nS!T!\xe4\r\nS!B!GND!more\r\n"
         "S!T!\r\nS!T!AB\r\n",
         "2 GND, 1 \xe4, 1 b, 1 AB, 1 A, 1 , "},
        {"A!NET_NAME!\r\nJ!x!\r\n", ""},
        // Optional line ends, and bytes of line ends that belong to a name.
        {"A!NET_NAME\r\n\r\nJ!\r\n\r\nS!a\r\n\r\n\r\n\r\n\r\nS!b\r\r\nS!a\nS!\r\nS!a",
         "2 a, 1 b\r, 1 a\nS, "},
        {"A!NET_NAME\r\nJ!\r\nS!a\r\nS!a\r", "1 a\r, 1 a, "},
        {"A!NET_NAME\r\nJ!\r\nS!\0\r\nS!\0!\r\nS!"s + longName + "\r\nS!" + longName + "!",
         "2 "s + longName + ", 2 \0, "s},
        // A name that comes again counts as a column only once.
        {"A!NET_NAME!B!NET_NAME!C\r\nJ!\r\nS!a!b!c!d\r\n", "1 c, "},
        {"A!A!A!NET_NAME\r\nJ!\r\nS!a!b!c\r\n", "1 b, "},
    };
    for (const auto& [survey, ranking] : surveys) {
        expectRanking(survey, ranking);
    }
}

TEST(NetRanking, tellsFirstWhatIsNoViewThenWhatHasNoNets) {
    const std::string kNoView =
        "nets.txt parsing failed after successfully parsing the first 0 S records";
    const std::string kNotWhole =
        "nets.txt parsing failed to parse whole file after successfully parsing the first ";
    const std::pair<std::string, std::string> surveys[] = {
        {"", kNoView},
        {"A!NET\r\nS!a\r\n", kNoView},
        {"A!NET_NAME\r\n\r", kNoView},
        {"A!NET\r\nJ!\r\nT!a\r\n", kNotWhole + "0 S records"},
        {"A!NET\r\nJ!\r\nS!a\r\nS!b\r\nT!a\r\n", kNotWhole + "2 S records"},
        {"A!X!NET_NAME\r\nJ!\r\nS!a\r\nS!b!c\r\nS", kNotWhole + "2 S records"},
        {"A!NET_NAME\r\nJ!\r\nS!a\r\n\r\n\rS!b\r\n", kNotWhole + "1 S records"},
        {"A!NET\r\nJ!\r\n", "nets.txt has no NET_NAME column"},
        {"A!NET\r\nJ!\r\nS!a\r\n", "nets.txt has no NET_NAME column"},
        {"A!X!NET_NAME\r\nJ!\r\nS!a!b\r\nS!a\r\nS!a!b\r\nS!a\r\n",
         "nets.txt record 2 is too short for its NET_NAME column"},
    };
    for (const auto& [survey, failure] : surveys) {
        expectRanking(survey, failure);
    }
}

}  // namespace
}  // namespace velextracta
