#include <algorithm>
#include <map>

#include "standin/Sandbox.h"

namespace {

class MakeDesign : public Sandbox {
protected:
    void make(std::vector<std::string> options) const {
        options.push_back(at("design.mcm"));
        const Outcome outcome = makeDesign(options);
        ASSERT_TRUE(succeeded(outcome)) << outcome.printed;
    }

    // Counts of one field's values, as extracta-standin tells them.
    std::map<std::string, int> countBy(const std::string& view, const std::string& field) const {
        writeControlFile(view + "\n\n\t" + field + "\n\nEND\n\n");
        EXPECT_TRUE(succeeded(extract()));
        std::ifstream file(at("out.txt"), std::ios::binary);
        std::map<std::string, int> counts;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("S!")) {
                ++counts[line.substr(2, line.size() - 4)];
            }
        }
        return counts;
    }
};

TEST_F(MakeDesign, ItWritesTheSameDesignForTheSameSeedOnly) {
    make({"--records", "500"});
    const std::string first = read("design.mcm");
    make({"--records", "500", "--seed", "1", "--nets", "200"});
    EXPECT_TRUE(read("design.mcm") == first);
    make({"--records", "500", "--seed", "2"});
    EXPECT_FALSE(read("design.mcm") == first);
}

TEST_F(MakeDesign, ItGivesMostRecordsToAFewNets) {
    make({"--records", "5000"});
    auto nets = countBy("CONNECTIVITY", "NET_NAME");
    EXPECT_GT(nets[""], 0);
    EXPECT_GT(nets.size(), 100U);
    EXPECT_GT(nets["GND"] + nets["VDD_CORE"] + nets["VDDQ"] + nets["VDD_IO"], 2500);
    EXPECT_EQ(countBy("NET", "NET_NAME").size(), 200U);
}

TEST_F(MakeDesign, ItHoldsRecordsForEveryFilter) {
    make({"--records", "5000"});
    const std::pair<const char*, std::pair<const char*, std::vector<const char*>>> cases[] = {
        {"CONNECTIVITY", {"CLASS", {"CONDUCTOR", "ETCH", "PIN", "VIA CLASS", "DRC ERROR CLASS"}}},
        {"CONNECTIVITY", {"RAT_CONNECTED", {"", "YES", "NO"}}},
        {"CONNECTIVITY", {"WIREBOND_MATERIAL", {"", "GOLD"}}},
        {"FULL_GEOMETRY", {"CLASS", {"CONDUCTOR", "ETCH", "PIN", "VIA CLASS", "MANUFACTURING"}}},
        {"FULL_GEOMETRY", {"PAD_SHAPE_NAME", {"", "CIRCLE", "FIG_RECTANGLE", "OCTAGON"}}},
        {"GEOMETRY", {"CLASS", {"BOARD GEOMETRY", "SUBSTRATE GEOMETRY", "DRAWING FORMAT"}}},
        {"GEOMETRY", {"SUBCLASS", {"OUTLINE", "SOLDERMASK_TOP"}}},
        {"COMPOSITE_PAD", {"DRILL_ARRAY_ROWS", {"", "2"}}},
        {"COMPOSITE_PAD", {"BACKDRILL_TOP_LAYER", {"", "L3"}}},
        {"COMPOSITE_PAD", {"BACKDRILL_BOTTOM_LAYER", {"", "L4"}}},
        {"LAYER", {"LAYER_TYPE", {"CONDUCTOR", "DIELECTRIC"}}},
        {"DIE_STACK_DEF", {"REFDES", {"DIE1"}}},
        {"COMPONENT", {"REFDES", {"BGA1", "DIE1", "C1"}}},
        {"LOGICAL_PIN", {"PIN_NUMBER", {"A1", "AB12"}}},
    };
    for (const auto& [view, wanted] : cases) {
        auto counts = countBy(view, wanted.first);
        for (const char* value : wanted.second) {
            EXPECT_GT(counts[value], 0) << view << ' ' << wanted.first << " '" << value << "'";
        }
    }
}

TEST_F(MakeDesign, ItPutsOddNamesAmongTheLargest) {
    make({"--records", "5000", "--odd-names"});
    auto counts = countBy("CONNECTIVITY", "NET_NAME");
    std::multimap<int, std::string, std::greater<>> bySize;
    for (const auto& [name, count] : counts) {
        bySize.emplace(count, name);
    }
    std::vector<std::string> largest;
    for (auto entry = bySize.begin(); largest.size() < 4; ++entry) {
        largest.push_back(entry->second);
    }
    std::sort(largest.begin(), largest.end());
    EXPECT_EQ(largest, (std::vector<std::string>{"GND", "SENSE\xC3\x28\xFF", "VDD 'CORE',1",
                                                 "VDD.(CORE)/1"}));
}

TEST_F(MakeDesign, ItWritesDesignsWithoutNetsAndWithoutRecords) {
    make({"--nets", "0", "--records", "10"});
    EXPECT_EQ(countBy("CONNECTIVITY", "NET_NAME"), (std::map<std::string, int>{{"", 10}}));
    make({"--records", "0"});
    EXPECT_TRUE(countBy("CONNECTIVITY", "NET_NAME").empty());
}

TEST_F(MakeDesign, ItRefusesBadOptionsAndLeavesNothing) {
    const std::string file = at("sub/design.mcm");
    std::filesystem::create_directory(at("sub"));
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--nets", "-1", file}, "--nets needs a number from 0 to 100000, not \"-1\""},
        {{"--nets", "100001", file}, "--nets needs a number"},
        {{"--records", "1e6", file}, "--records needs a number"},
        {{file, "--seed"}, "--seed needs a number"},
        {{"--speed", file}, "unknown option --speed"},
        {{file, file}, "exactly one file"},
        {{}, "exactly one file"},
        {{at("no/such/design.mcm")}, "unable to open database file"},
        {{at("sub")}, "sub: cannot be written"},
    };
    for (const auto& [options, complaint] : cases) {
        const Outcome outcome = makeDesign(options);
        EXPECT_TRUE(failedWith(outcome, complaint)) << outcome.printed;
    }
    EXPECT_TRUE(std::filesystem::is_empty(at("sub")));
}

}  // namespace
