#include <string>

#include <gtest/gtest.h>

#include "tkcore/report/Assertion.h"

namespace {

std::string reports;

void noteReport(const char* source, int line, const char* condition) {
    reports += std::string(source) + " " + std::to_string(line) + " " + condition + "\n";
}

TEST(Assertion, isProcessedUntilItsSiteOrAllAreIgnoredAndLoggedFromThenOn) {
    tkcore::ProcessAssertFailure_G = [](const char* source, int line, const char* condition,
                                        bool& ignoreSite) {
        noteReport(source, line, condition);
        ignoreSite = true;
    };
    tkcore::LogAssertFailure_G = [](const char* source, int line, const char* condition) {
        reports += "log ";
        noteReport(source, line, condition);
    };
    for (int time = 0; time < 2; ++time) {
        VEL_ASSERT_AT("VelExtracta", 7, !"view creation failed");
    }
    const int argc = 2;
    VEL_ASSERT_AT("VelExtracta", 8, argc >= 3);
    VEL_ASSERT_AT("VelExtracta", 9, argc >= 2);
    tkcore::IgnoreAllAsserts_G = true;
    VEL_ASSERT_AT("VelExtracta", 10, argc >= 3);
    EXPECT_EQ(reports,
              "VelExtracta 7 !\"view creation failed\"\n"
              "log VelExtracta 7 !\"view creation failed\"\n"
              "VelExtracta 8 argc >= 3\nlog VelExtracta 10 argc >= 3\n");
}

}  // namespace
