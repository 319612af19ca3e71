#include <csignal>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

/// examples/extracta-again with an extractor that follows other commands at each try.
class Again : public EndToEnd {
public:
    struct Row {
        const char* name;
        std::vector<std::string> tries;
        const char* codes;
        int exitCode;

        friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
    };

protected:
    void SetUp() override {
        writeFile(design, "a design");
        writeFile(directory / "control.txt", "a control file");
        environment = {{"EXTRACTA_AGAIN_EXTRACTOR", directory / "extracta"},
                       {"EXTRACTA_AGAIN_TIMES", "3"},
                       {"EXTRACTA_AGAIN_PAUSE", "0"}};
    }

    /// Each try replaces its commands by those of the next try.
    void prepare(const Strings& tries) {
        std::string commands = "exit 0";
        for (auto number = tries.size(); number > 0; --number) {
            writeFile(directory / std::to_string(number), commands);
            commands = "append tries x\nremove extracta.commands\ncopy " + std::to_string(number) +
                       " extracta.commands\n" + tries[number - 1] + "\n";
        }
        writeProgram(directory / "extracta", commands);
    }

    Command command(Strings words) const {
        words.insert(words.begin(), EXAMPLES "extracta-again");
        words.insert(words.end(), {"-m", "design.mcm", "control.txt", "first.txt", "second.txt"});
        return {words, environment, directory.path(), {}};
    }

    std::set<std::string> views() const {
        std::set<std::string> names;
        for (const char* name : {"first.txt", "second.txt"}) {
            if (fs::exists(directory / name)) {
                names.insert(name);
            }
        }
        return names;
    }
};

const std::string kHalf = "write first.txt half\nwrite second.txt half\n";
const std::string kWhole = "write second.txt whole";
const Again::Row kRows[] = {
    {"untilOneSucceeds", {kHalf + "exit 3", kHalf + "exit 17", kWhole}, "3 17", 0},
    {"afterAnyCodeIfNoneIsNamed", {kHalf + "exit 7", kHalf + "end-by 9", kWhole}, "", 0},
    {"onlyAsOftenAsWanted", {"exit 3", kHalf + "exit 3", kHalf + "exit 17"}, "3 17", 17},
    {"notAfterACodeLikeTheNamedOnes", {kHalf + "exit 1"}, "11 17", 1},
    {"notAfterSuccess", {kWhole}, "0 3", 0},
};

class AgainRows : public Again, public testing::WithParamInterface<Again::Row> {};

TEST_P(AgainRows, isTriedWithoutHalfViews) {
    const Row& row = GetParam();
    environment["EXTRACTA_AGAIN_CODES"] = row.codes;
    for (const Strings& options : {Strings{"-k", "-c"}, Strings{"-k"}}) {
        prepare(row.tries);
        EXPECT_EQ(runProgram(command(options)).exitCode, row.exitCode);
        EXPECT_EQ(readFile(directory / "tries"), std::string(row.tries.size(), 'x'));
        EXPECT_EQ(views(), row.exitCode == 0 ? std::set<std::string>{"second.txt"}
                                             : std::set<std::string>{});
        EXPECT_EQ(readFile(design) + readFile(directory / "control.txt"), "a designa control file");
        fs::remove(directory / "tries");
    }
}

INSTANTIATE_TEST_SUITE_P(Extraction, AgainRows, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Again, endsAtOnceWithWhatItWaitsFor) {
    environment["EXTRACTA_AGAIN_PAUSE"] = "86399";
    const struct {
        std::string commands;
        std::string process;
        std::size_t viewsThen;
    } cases[] = {{kHalf + "sleep 86400000", directory / "extracta", 2},
                 {kHalf + "exit 3", "86399", 0}};
    for (const auto& expected : cases) {
        prepare({expected.commands});
        ProgramRun program(command({"-k"}));
        const bool waits = eventually([&] {
            return !processesWith(expected.process).empty() && views().size() == expected.viewsThen;
        });
        kill(program.id(), SIGTERM);
        EXPECT_TRUE(waits);
        EXPECT_EQ(program.wait().exitCode, 128 + SIGTERM);
        EXPECT_FALSE(anyProcessLeft());
        EXPECT_TRUE(views().empty());
    }
}

TEST_F(Again, refusesSettingsThatAreNoNumbers) {
    prepare({kWhole});
    for (const char* setting : {"EXTRACTA_AGAIN_TIMES", "EXTRACTA_AGAIN_PAUSE"}) {
        environment[setting] = "a few";
        const Outcome outcome = runProgram(command({"-k"}));
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_NE(outcome.output.find(setting + std::string("=a few")), std::string::npos);
        environment[setting] = "1";
    }
    EXPECT_FALSE(fs::exists(directory / "tries"));
}

}  // namespace
