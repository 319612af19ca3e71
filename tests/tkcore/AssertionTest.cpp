#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tkcore/Assertion.h"

namespace {

std::vector<std::string> reports;

std::string describe(const char* source, int line, const char* condition) {
    return std::string(source) + ":" + std::to_string(line) + ":" + condition;
}

class Assertion : public testing::Test {
protected:
    void SetUp() override {
        reports.clear();
        tkcore::ProcessAssertFailure_G = [](const char* source, int line, const char* condition,
                                            bool& ignoreSite) {
            reports.push_back("process " + describe(source, line, condition));
            ignoreSite = true;
        };
        tkcore::LogAssertFailure_G = [](const char* source, int line, const char* condition) {
            reports.push_back("log " + describe(source, line, condition));
        };
    }
    void TearDown() override {
        tkcore::ProcessAssertFailure_G = process;
        tkcore::LogAssertFailure_G = log;
        tkcore::IgnoreAllAsserts_G = false;
    }

private:
    const tkcore::ProcessAssertFailure process = tkcore::ProcessAssertFailure_G;
    const tkcore::LogAssertFailure log = tkcore::LogAssertFailure_G;
};

void failAtOneSite() {
    VEL_ASSERT_AT("VelExtracta", 7, !"view creation failed");
}

TEST_F(Assertion, isProcessedUntilItsSiteIsIgnoredAndLoggedFromThenOn) {
    failAtOneSite();
    failAtOneSite();
    const int argc = 2;
    VEL_ASSERT_AT("VelExtracta", 8, argc >= 3);
    VEL_ASSERT_AT("VelExtracta", 9, argc >= 2);
    const std::vector<std::string> expected{
        "process VelExtracta:7:!\"view creation failed\"",
        "log VelExtracta:7:!\"view creation failed\"",
        "process VelExtracta:8:argc >= 3",
    };
    EXPECT_EQ(reports, expected);
}

TEST_F(Assertion, isOnlyLoggedWhileAllAreIgnored) {
    tkcore::IgnoreAllAsserts_G = true;
    VEL_ASSERT_AT("VelExtracta", 10, !"again");
    EXPECT_EQ(reports, std::vector<std::string>{"log VelExtracta:10:!\"again\""});
}

}  // namespace
