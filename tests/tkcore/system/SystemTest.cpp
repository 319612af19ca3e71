#include <gtest/gtest.h>

#include "tkcore/system/System.h"

namespace {

TEST(SystemMessage, isShortAndWholeForEveryCode) {
    constexpr int kBehindAll = 16'000;
    for (int code = 1; code < kBehindAll; ++code) {
        const std::string text = VEL_ANSI(tkcore::systemMessage(code));
        EXPECT_LE(text.size(), 79U) << code;
        EXPECT_EQ(text.find('%'), std::string::npos) << code << ": " << text;
    }
}

}  // namespace
