#include "standin/Sandbox.h"

namespace {

using MakeDesign = Sandbox;

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
