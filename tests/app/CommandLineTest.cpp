#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/CommandLine.h"

namespace {

using testing::ElementsAreArray;
using Texts = std::vector<tkcore::AString>;

TEST(CommandLine, isScannedForOptionsBeforeTheLastTwoArguments) {
    const struct {
        std::vector<std::string> arguments;
        bool zip;
        bool standardViews;
        Texts nets;
        Texts addedFiles;
    } cases[] = {
        {{"VelExtracta", "a.mcm", "out"}, false, true, {}, {}},
        {{"VelExtracta", "-z", "-cell", "a.mcm", "out"}, true, false, {}, {}},
        {{"VelExtracta", "/Z", "/CeLL", "/Z", "a.mcm", "out"}, true, false, {}, {}},
        {{"VelExtracta", "z", "--z", "-zz", "-q", "a.mcm", "out"}, false, true, {}, {}},
        {{"VelExtracta", "-n", "A,,B,", "/N", "C", "a.mcm", "out"},
         false,
         true,
         {"A", "B", "C"},
         {}},
        {{"VelExtracta", "-add", "x,y z", "/ADD", "", "a.mcm", "out"},
         false,
         true,
         {},
         {"x", "y z"}},
        // A value is an option, too; the design is a value behind the last option; no further one
        // is looked at.
        {{"VelExtracta", "-n", "-z", "a.mcm", "out"}, true, true, {"-z"}, {}},
        {{"VelExtracta", "-add", "a.mcm", "out"}, false, true, {}, {"a.mcm"}},
        {{"VelExtracta", "-z", "-cell"}, false, true, {}, {}},
        {{"-z", "a.mcm", "out"}, true, true, {}, {}},
    };
    for (const auto& expected : cases) {
        std::vector<char*> argv;
        for (const std::string& argument : expected.arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        const auto options =
            velextracta::scanCommandLine(static_cast<int>(argv.size()), argv.data());
        SCOPED_TRACE(testing::PrintToString(expected.arguments));
        EXPECT_EQ(options.zip, expected.zip);
        EXPECT_EQ(options.standardViews, expected.standardViews);
        EXPECT_THAT(options.nets, ElementsAreArray(expected.nets));
        EXPECT_THAT(options.addedFiles, ElementsAreArray(expected.addedFiles));
    }
}

}  // namespace
