#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/ViewFileDoubts.h"
#include "support/TemporaryDirectory.h"

namespace velextracta {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

constexpr std::size_t kHead = 65'536;

Strings doubts(const std::string& text, const Strings& fields) {
    const TemporaryDirectory directory;
    writeFile(directory / "view.txt", text);
    return doubtsAboutViewFile(
        tkcore::LongFileName(tkcore::AString((directory / "view.txt").string())), fields);
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

TEST(ViewFileDoubts, areNoneAboutAFileThatHoldsWhatWasAskedFor) {
    const std::string start = "A!F!G!\r\nJ!d!\r\n";
    const std::string record = "S!f!g!\r\n";
    const std::string fills(kHead - start.size() - record.size() - 4, 'x');
    const std::pair<std::string, Strings> cases[] = {
        {start, {"F", "G"}},
        {start + record + "\r\n" + record, {"F", "G"}},
        {start + record + "S!!!", {"F", "G"}},              // the last line end may be missing
        {"A!F!G\r\nJ!\r\nS!f!g\r\nS!!", {"F", "G"}},        // and the last "!", if in all lines
        {start + "S!\rf\n!g\n!\r\n" + record, {"F", "G"}},  // a lone CR or LF is text
        {"A!any!\r\nJ!\r\nS!x!\r\n", {}},                   // where all fields were asked for
        // The text after the head, or after a thousand lines, is not checked.
        {start + record + "S!" + fills + "!g!\r\n", {"F", "G"}},
        {start + record + "S!f" + std::string(kHead, 'x'), {"F", "G"}},
        {start + repeated(record, 998) + "S!\r\n", {"F", "G"}},
    };
    for (const auto& [text, fields] : cases) {
        EXPECT_THAT(doubts(text, fields), ElementsAre()) << text.substr(0, 60);
    }
}

TEST(ViewFileDoubts, nameTheFirstDifference) {
    const std::string noView = "its first two lines do not begin with A! and J!";
    const std::string end = "\r\nJ!\r\n";
    const std::string line(kHead, 'x');
    const struct {
        std::string text;
        Strings fields;
        std::string doubt;
    } cases[] = {
        {"", {}, noView},
        {"A!F!\r\n", {"F"}, noView},
        {"A!" + line + end, {"F"}, noView},
        {"J!\r\nA!F!\r\n", {"F"}, noView},
        {"A!F!\nJ!\nS!f!\n", {"F"}, "its lines end with LF, not with CR LF"},
        {"A!G!F!" + end, {"F", "G"}, R"(column 1 of its A! line is "G", asked for was "F")"},
        {"A!F!!G!" + end, {"F", "G"}, R"(column 2 of its A! line is "", asked for was "G")"},
        {"A!F!" + end, {"F", "G"}, R"(column 2 of its A! line is missing, asked for was "G")"},
        {"A!F!G!" + end, {"F"}, R"(column 2 of its A! line is "G", asked for was no more)"},
        {"A!" + std::string(81, 'l') + end, {"F"}, std::string(80, 'l') + "...\", asked for was"},
        {"A!F" + end + "S!1\r\nS!1!\r\nS!1!1\r\n",
         {"F"},
         "2 of its first 3 records have not as many fields as its A! line, which has 1: "
         "line 4 has 2"},
        {"A!F!" + end + "S!1!\r\n\r\nS!1\r\n",
         {},
         "1 of its first 2 records have not as many fields as its A! line, which has 2 with the "
         "empty one behind the last !: line 5 has 1"},
        {"A!F!" + end + "S!a\r\nb!\r\n", {}, "2 of its first 2 records"},
        {"A!F!" + end + "ERROR\r\n", {}, ": line 3 does not begin with S!"},
        {"A!F!" + end + repeated("S!\r\n", 2000), {}, "998 of its first 998 records"},
    };
    for (const auto& [text, fields, doubt] : cases) {
        EXPECT_THAT(doubts(text, fields), ElementsAre(HasSubstr(doubt))) << text.substr(0, 60);
    }
    EXPECT_EQ(doubts("A!G!" + end + "S!\r\n", {"F"}).size(), 2U);
}

TEST(ViewFileDoubts, tellWhyAFileCannotBeRead) {
    const TemporaryDirectory directory;
    for (const auto& path : {directory.path(), directory / "absent.txt"}) {
        const tkcore::LongFileName name(tkcore::AString(path.string()));
        EXPECT_THAT(doubtsAboutViewFile(name, {}),
                    ElementsAre(HasSubstr(path.filename().string())));
    }
}

}  // namespace
}  // namespace velextracta
