#include <algorithm>
#include <map>

#include "standin/Sandbox.h"

namespace {

class MakeDesign : public Sandbox {
protected:
    void make(std::vector<std::string> options) const {
        options.push_back(there("design.mcm"));
        const Outcome outcome = makeDesign(options);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    }

    /// Counts of one field's values, as extracta-standin tells them.
    std::map<std::string, int> countBy(const std::string& view, const std::string& field) const {
        writeControlFile(view + "\n\n\t" + field + "\n\nEND\n\n");
        EXPECT_EQ(extract().exitCode, 0);
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

TEST_F(MakeDesign, writesTheSameDesignForTheSameSeedOnly) {
    make({"--records", "500"});
    const std::string first = read("design.mcm");
    make({"--records", "500", "--seed", "1", "--nets", "200"});
    EXPECT_TRUE(read("design.mcm") == first);
    make({"--records", "500", "--seed", "2"});
    EXPECT_FALSE(read("design.mcm") == first);
}

TEST_F(MakeDesign, givesMostRecordsToAFewNets) {
    make({"--records", "5000"});
    auto nets = countBy("CONNECTIVITY", "NET_NAME");
    EXPECT_GT(nets[""], 0);
    EXPECT_GT(nets.size(), 100U);
    EXPECT_GT(nets["GND"] + nets["VDD_CORE"] + nets["VDDQ"] + nets["VDD_IO"], 2500);
    EXPECT_EQ(countBy("NET", "NET_NAME").size(), 200U);
}

TEST_F(MakeDesign, refusesBadOptionsAndLeavesNothing) {
    const std::string file = there("sub/design.mcm");
    std::filesystem::create_directory(at("sub"));
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--nets", "-1", file}, "--nets needs a number from 0 to 100000, not \"-1\""},
        {{"--nets", "100001", file}, "--nets needs a number"},
        {{"--records", "1e6", file}, "--records needs a number"},
        {{file, "--seed"}, "--seed needs a number"},
        {{"--speed", file}, "unknown option --speed"},
        {{file, file}, "exactly one file"},
        {{}, "exactly one file"},
        {{there("no/such/design.mcm")}, "unable to open database file"},
        {{there("sub")}, "sub: cannot be written"},
    };
    for (const auto& [options, complaint] : cases) {
        expectFailure(makeDesign(options), complaint);
    }
    EXPECT_TRUE(std::filesystem::is_empty(at("sub")));
}

}  // namespace
