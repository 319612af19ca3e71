#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/CommandLine.h"

namespace {

using testing::ElementsAre;

velextracta::CommandLine scan(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    return velextracta::scanCommandLine(static_cast<int>(argv.size()), argv.data());
}

TEST(CommandLine, isScannedForOptionsBeforeTheLastTwoArguments) {
    const auto none = scan({"VelExtracta", "z", "--z", "-zz", "-q", "-z", "-cell"});
    EXPECT_FALSE(none.zip);
    EXPECT_TRUE(none.standardViews);
    // The first argument is scanned, and a value is scanned as an option, too.
    EXPECT_TRUE(scan({"-Z", "a.mcm", "out"}).zip);
    const auto options = scan({"/CeLL", "-n", "A,,B,", "/N", "/z", "a.mcm", "out"});
    EXPECT_TRUE(options.zip);
    EXPECT_FALSE(options.standardViews);
    EXPECT_THAT(options.nets, ElementsAre("A", "B", "/z"));
    EXPECT_THAT(scan({"-add", "x,y z", "/ADD", "", "-add", "a.mcm", "out"}).addedFiles,
                ElementsAre("x", "y z", "a.mcm"));
}

}  // namespace
