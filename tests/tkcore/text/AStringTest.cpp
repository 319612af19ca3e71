#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tkcore/text/AString.h"

using testing::ElementsAre;
using tkcore::AString;
using tkcore::VEL_ANSI;

namespace {

TEST(AString, keepsEveryNarrowTextUnchangedOnItsWayThroughWide) {
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte) {
        everyByte += static_cast<char>(byte);
    }
    const std::string texts[] = {
        "Größe \xe2\x82\xac \xf0\x9f\x98\x80",
        "half a character \xc3",
        "\xe2\x82",
        "overlong \xc0\xaf \xe0\x80\xaf, surrogates \xed\xb2\x80 \xed\xa0\x80",
        "beyond \xf4\x90\x80\x80",
        everyByte,
    };
    for (const std::string& text : texts) {
        EXPECT_EQ(VEL_ANSI(AString(text)), text);
    }
    EXPECT_EQ(VEL_ANSI(AString("\xe2\x82") + AString("\xac")), "\xe2\x82\xac");
}

TEST(AString, takesACharacterOfSeveralBytesForOneWideCharacter) {
    EXPECT_EQ(AString("\xc3\xa9\xf0\x9f\x98\x80").wide(), L"\u00e9\U0001F600");
    EXPECT_EQ(AString("a\xffz").wide().size(), 3U);
}

TEST(AString, formatsEveryArgumentByItsOwnType) {
    EXPECT_EQ(AString::Format("%d %s", "text", 7), "text 7");
    EXPECT_EQ(AString::Format("%d %d %s", -7, ~0ULL, 0.5), "-7 18446744073709551615 0.5");
    EXPECT_EQ(AString::Format("%s|%s|", "one"), "one||");
    EXPECT_EQ(AString::Format("%s", "one", "two"), "one");
    EXPECT_EQ(AString::Format("%s", std::string("100%s\xff")), AString("100%s\xff"));
    EXPECT_EQ(AString::Format("100%% of %s", AString("it")), "100% of it");
}

TEST(AString, tokenizesAtEverySeparator) {
    EXPECT_THAT(AString(",VDD,,G ND,").TokenizeString(",", false), ElementsAre("VDD", "G ND"));
    EXPECT_THAT(AString(",VDD,,").TokenizeString(",", true), ElementsAre("", "VDD", "", ""));
    EXPECT_THAT(AString("").TokenizeString(",", false), ElementsAre());
}

}  // namespace
