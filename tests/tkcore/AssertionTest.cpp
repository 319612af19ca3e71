#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tkcore/Assertion.h"

namespace {

std::vector<std::string> reports;

void report(const char* hook, const char* source, int line, const char* condition) {
    reports.push_back(std::string(hook) + " " + source + " " + std::to_string(line) + " " +
                      condition);
}

void failAtOneSite() {
    VEL_ASSERT_AT("VelExtracta", 7, !"view creation failed");
}

TEST(Assertion, isProcessedUntilItsSiteOrAllAreIgnoredAndLoggedFromThenOn) {
    tkcore::ProcessAssertFailure_G = [](const char* source, int line, const char* condition,
                                        bool& ignoreSite) {
        report("process", source, line, condition);
        ignoreSite = true;
    };
    tkcore::LogAssertFailure_G = [](const char* source, int line, const char* condition) {
        report("log", source, line, condition);
    };
    failAtOneSite();
    failAtOneSite();
    const int argc = 2;
    VEL_ASSERT_AT("VelExtracta", 8, argc >= 3);
    VEL_ASSERT_AT("VelExtracta", 9, argc >= 2);
    tkcore::IgnoreAllAsserts_G = true;
    VEL_ASSERT_AT("VelExtracta", 10, argc >= 3);
    EXPECT_THAT(reports, testing::ElementsAre("process VelExtracta 7 !\"view creation failed\"",
                                              "log VelExtracta 7 !\"view creation failed\"",
                                              "process VelExtracta 8 argc >= 3",
                                              "log VelExtracta 10 argc >= 3"));
}

}  // namespace
