#include <regex>

#include <gmock/gmock.h>

#include "standin/ControlFile.h"

namespace {

using testing::HasSubstr;

TEST(ControlFile, namesTheLineThatIsMalformed) {
    const std::regex lineEnd("~");  // stands for CR LF
    const std::pair<const char*, const char*> cases[] = {
        {"", "line 1: the file holds no view block"},
        {"net~~\tA~~END~~", "line 1: expected a view keyword"},
        {"NET~\tA~~END~~", "line 2: expected an empty line after the view keyword"},
        {"NET~~A~~END~~", "line 3: expected a line led by a tab"},
        {"NET~~\tA", "line 3: the last line does not end with CR LF"},
        {"NET~~\tA~~", "line 5: the file ends inside a view block"},
        {"NET~~\tA~END~~", "line 4: expected an empty line after the fields"},
        {"NET~~\tA~~FIN~~", "line 5: expected END"},
        {"NET~~\tA~\t~~END~~", "line 4: expected a field name"},
        {"NET~~\t A~~END~~", "line 3: malformed condition"},
        {"NET~~\tA = 'x'~B~", "line 4: expected an empty line after the filters"},
        {"NET~~\tA = 'x~~\tA~~END~~", "line 3: malformed condition \"A = 'x\""},
        {"NET~~\tA = 'x' ~~\tA~~END~~", "the closing quote must end the line"},
        {"NET~~\tA < 'x'~~\tA~~END~~", "the operator must be = or !="},
        {"NET~~\tA='x'~~\tA~~END~~", "a field name and a blank must come first"},
        {"NET~~\tA != x~~\tA~~END~~", "a value without quotes"},
        {"NET~~\tOR~\tA = 'x'~~\tA~~END~~", "line 3: a condition is missing"},
        {"NET~~\tA = 'x'~\tOR~\tB = 'y'~\t~~\tA~~END~~", "line 4: an alternative needs"},
        {"NET~~\tA = 'x'~\t~\tOR~~\tA~~END~~", "line 6: a condition is missing"},
        {"NET~~\tA = 'x'~\tB = 'y'~\t~~\tA~~END~~", "line 5: a lone tab may only"},
        {"NET~\n\tA~", "line 2: the line ends with a bare"},
        {"N\rET~", "line 1: a carriage return"},
    };
    for (const auto& [text, complaint] : cases) {
        const std::string file = std::regex_replace(text, lineEnd, "\r\n");
        EXPECT_THAT([&] { standin::parseControlFile(file); },
                    testing::ThrowsMessage<standin::ControlFileError>(HasSubstr(complaint)))
            << text;
    }
}

}  // namespace
