#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tkcore/AString.h"

using testing::ElementsAre;
using tkcore::AString;
using tkcore::VEL_ANSI;

namespace {

std::string everyByteTwice() {
    std::string bytes;
    for (int first = 0; first < 256; ++first) {
        bytes += static_cast<char>(first);
        bytes += static_cast<char>(255 - first);
    }
    return bytes;
}

TEST(AString, keepsEveryNarrowTextUnchangedOnItsWayThroughWide) {
    const std::string texts[] = {
        "",
        "GND",
        "Größe",
        "\xe2\x82\xac \xf0\x9f\x98\x80",
        "\xff\xfe",
        "half a character \xc3",
        "\xe2\x82",
        "overlong \xc0\xaf \xe0\x80\xaf",
        "surrogates \xed\xb2\x80 \xed\xa0\x80",
        "beyond \xf4\x90\x80\x80",
        everyByteTwice(),
    };
    for (const std::string& text : texts) {
        EXPECT_EQ(VEL_ANSI(AString(text)), text);
    }
}

TEST(AString, takesACharacterOfSeveralBytesForOneWideCharacter) {
    EXPECT_EQ(AString("\xc3\xa9\xf0\x9f\x98\x80").wide(), L"\u00e9\U0001F600");
    EXPECT_EQ(AString("a\xffz").wide().size(), 3U);
}

TEST(AString, isPutTogetherAcrossTheMiddleOfACharacter) {
    EXPECT_EQ(VEL_ANSI(AString("\xe2\x82") + AString("\xac")), "\xe2\x82\xac");
}

TEST(AString, formatsEveryArgumentByItsOwnType) {
    EXPECT_EQ(AString::Format("%s exited with %d", AString("extracta"), 3),
              "extracta exited with 3");
    EXPECT_EQ(AString::Format("%d %s", "text", 7), "text 7");
    EXPECT_EQ(AString::Format("%d %d %s", -7, ~0ULL, 0.5), "-7 18446744073709551615 0.5");
    EXPECT_EQ(AString::Format("%s|%s|", "one"), "one||");
    EXPECT_EQ(AString::Format("%s", "one", "two"), "one");
    EXPECT_EQ(AString::Format("%s", std::string("100%s\xff")), AString("100%s\xff"));
    EXPECT_EQ(AString::Format("100%% of %s", "it"), "100% of it");
}

TEST(AString, tokenizesAtEverySeparator) {
    EXPECT_THAT(AString("VDD,GND").TokenizeString(",", false), ElementsAre("VDD", "GND"));
    EXPECT_THAT(AString(",VDD,,GND,").TokenizeString(",", false), ElementsAre("VDD", "GND"));
    EXPECT_THAT(AString(",VDD,,").TokenizeString(",", true), ElementsAre("", "VDD", "", ""));
    EXPECT_THAT(AString("").TokenizeString(",", false), ElementsAre());
    EXPECT_THAT(AString("A B").TokenizeString(",", false), ElementsAre("A B"));
}

}  // namespace
