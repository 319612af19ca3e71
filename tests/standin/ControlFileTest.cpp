#include <gmock/gmock.h>

#include "standin/ControlFile.h"

namespace {

using namespace standin;
using testing::HasSubstr;

std::string withCrLf(std::string_view text) {
    std::string result;
    for (const char character : text) {
        result += character == '\n' ? "\r\n" : std::string(1, character);
    }
    return result;
}

std::string complaintAbout(const std::string& text) {
    try {
        parseControlFile(text);
    } catch (const ControlFileError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(ControlFile, keepsAlternativesConditionsAndFieldsApart) {
    const auto blocks = parseControlFile(
        withCrLf("PAD_DEF\n\n\t\nEND\n\n"
                 "NET\n\n\tA = 'x'\n\t\n\tOR\n\tB = 'y'\n\tC = 'z'\n\n\tD\n\tE\n\nEND\n\n"
                 "LAYER\n\n\tA = 'x'\n\n\t\nEND\n\n"));
    ASSERT_EQ(blocks.size(), 3U);
    EXPECT_TRUE(blocks[0].alternatives.empty() && blocks[0].fields.empty());
    ASSERT_EQ(blocks[1].alternatives.size(), 2U);
    EXPECT_EQ(blocks[1].alternatives[0].size(), 1U);
    EXPECT_EQ(blocks[1].alternatives[1].size(), 2U);
    EXPECT_THAT(blocks[1].fields, testing::ElementsAre("D", "E"));
    EXPECT_EQ(blocks[1].lineNumber, 6U);
    EXPECT_EQ(blocks[2].alternatives.size(), 1U);
    EXPECT_TRUE(blocks[2].fields.empty());
}

struct MalformedCase {
    const char* text;
    const char* complaint;
};

TEST(ControlFile, namesTheLineThatIsMalformed) {
    constexpr MalformedCase kCases[] = {
        {"", "line 1: the file holds no view block"},
        {"net\n\n\tA\n\nEND\n\n", "line 1: expected a view keyword"},
        {"NET\n\tA\n\nEND\n\n", "line 2: expected an empty line after the view keyword"},
        {"NET\n\nA\n\nEND\n\n", "line 3: expected a line led by a tab"},
        {"NET\n\n\tA", "line 3: the last line does not end with CR LF"},
        {"NET\n\n\tA\n\n", "line 5: the file ends inside a view block"},
        {"NET\n\n\tA\nEND\n\n", "line 4: expected an empty line after the fields"},
        {"NET\n\n\tA\n\nFIN\n\n", "line 5: expected END"},
        {"NET\n\n\tA\n\t\n\nEND\n\n", "line 4: expected a field name"},
        {"NET\n\n\t A\n\nEND\n\n", "line 3: malformed condition"},
        {"NET\n\n\tA = 'x'\nB\n", "line 4: expected an empty line after the filters"},
        {"NET\n\n\tA = 'x\n\n\tA\n\nEND\n\n", "line 3: malformed condition \"A = 'x\""},
        {"NET\n\n\tA = 'x' \n\n\tA\n\nEND\n\n", "the closing quote must end the line"},
        {"NET\n\n\tA < 'x'\n\n\tA\n\nEND\n\n", "the operator must be = or !="},
        {"NET\n\n\tA='x'\n\n\tA\n\nEND\n\n", "a field name and a blank must come first"},
        {"NET\n\n\tA != x\n\n\tA\n\nEND\n\n", "a value without quotes"},
        {"NET\n\n\tOR\n\tA = 'x'\n\n\tA\n\nEND\n\n", "line 3: a condition is missing"},
        {"NET\n\n\tA = 'x'\n\tOR\n\tB = 'y'\n\t\n\n\tA\n\nEND\n\n", "line 4: an alternative needs"},
        {"NET\n\n\tA = 'x'\n\t\n\tOR\n\n\tA\n\nEND\n\n", "line 6: a condition is missing"},
        {"NET\n\n\tA = 'x'\n\tB = 'y'\n\t\n\n\tA\n\nEND\n\n", "line 5: a lone tab may only"},
    };
    for (const MalformedCase& malformed : kCases) {
        EXPECT_THAT(complaintAbout(withCrLf(malformed.text)), HasSubstr(malformed.complaint))
            << malformed.text;
    }
    EXPECT_THAT(complaintAbout("NET\r\n\n\tA\r\n"), HasSubstr("line 2: the line ends with a bare"));
    EXPECT_THAT(complaintAbout("N\rET\r\n"), HasSubstr("line 1: a carriage return"));
}

}  // namespace
