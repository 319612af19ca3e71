#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using Records = std::vector<std::string>;
using Strings = std::vector<std::string>;

class DefaultRun : public EndToEnd {
protected:
    /// The lines of a view file from the third on, with their line ends, sorted.
    static Records records(const std::string& viewFile) {
        Records lines;
        for (std::size_t start = 0, number = 0; start < viewFile.size(); ++number) {
            const std::size_t end = std::min(viewFile.find("\r\n", start), viewFile.size() - 2) + 2;
            if (number >= 2) {
                lines.push_back(viewFile.substr(start, end - start));
            }
            start = end;
        }
        std::ranges::sort(lines);
        return lines;
    }

    static std::string header(const std::string& viewFile) {
        return viewFile.substr(0, viewFile.find("\r\n", viewFile.find("\r\n") + 2) + 2);
    }

    /// The output of one extracta run for a control file.
    std::string runByHand(const std::string& controlFile) const {
        writeFile(tools / "control", controlFile);
        const Outcome outcome =
            runProgram({{EXTRACTA_STANDIN, "-k", "-m", nameThere(design), "control", "view"},
                        {},
                        tools.path(),
                        {}});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        return readFile(tools / "view");
    }

    /// The control file of one connectivity run over the whole design, or the nets.
    static std::string connectivityControl(const std::map<std::string, std::string>& entries,
                                           const Strings& nets) {
        // Take the remainder's control file without its excluded nets.
        std::string control = entries.at("extracta_control_connremainder.txt");
        for (std::size_t at = 0; (at = control.find("\tNET_NAME !='")) != std::string::npos;) {
            control.erase(at, control.find("\r\n", at) + 2 - at);
        }
        if (!nets.empty()) {
            const std::string condition = "\tNET_NAME != ''\r\n";
            for (std::size_t at = 0; (at = control.find(condition, at)) != std::string::npos;) {
                at += condition.size();
                control.insert(at, "\tNET_NAME ='" + nets.front() + "'\r\n");
            }
        }
        return control;
    }

    /// Runs on the design as it is and compares every view with a run of that view alone.
    void expectViewsOfOneRun() {
        const Outcome outcome = run({"-z", "design.mcm", "out.vlx"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        const auto entries = packed(directory / "out.vlx");
        const std::string prefix = "extracta_control_";
        for (const auto& [name, bytes] : entries) {
            if (name.starts_with(prefix) && !name.starts_with(prefix + "conn")) {
                EXPECT_EQ(entries.at(name.substr(prefix.size())), runByHand(bytes)) << name;
            }
        }
        const std::string single = runByHand(connectivityControl(entries, {}));
        EXPECT_EQ(header(entries.at("conn.txt")), header(single));
        EXPECT_EQ(records(entries.at("conn.txt")), records(single));
    }

    /// Replaces the survey by one of these nets (name, records). Other views have only headers.
    void useSurvey(const std::vector<std::pair<std::string, int>>& nets) {
        std::string survey = "A!NET_NAME!\r\nJ!x!\r\n";
        for (const auto& [name, count] : nets) {
            for (int n = 0; n < count; ++n) {
                survey += "S!" + name + "!\r\n";
            }
        }
        writeFile(design, survey);
        limitProcesses(1);
        useScript(
            "append ../order $stem\\n\n"
            "if connnets copy $design $first\n"
            "unless connnets write $first A!F!\\r\\nJ!$stem!\\r\\nS!$stem!\\r\\n\n");
    }

    Strings order() const {
        Strings names;
        std::istringstream lines(readFile(directory / "order"));
        const std::string prefix = "extracta_control_";
        for (std::string line; std::getline(lines, line);) {
            names.push_back(line.substr(prefix.size()));
        }
        return names;
    }
};

/// The extractions that start after the survey.
Strings afterTheSurvey(Strings started) {
    const auto survey = std::ranges::find(started, "connnets");
    started.erase(started.begin(), std::next(survey));
    return started;
}

TEST_F(DefaultRun, givesTheRecordsOfOneSingleRun) {
    const Strings designs[] = {
        {"--nets", "40", "--records", "3000", "--seed", "1"},
        {"--nets", "5", "--records", "400", "--seed", "2"},
        {"--nets", "3", "--records", "500", "--seed", "3"},
        {"--nets", "0", "--records", "50", "--seed", "4"},
        {"--nets", "6", "--records", "0", "--seed", "5"},
        {"--nets", "30", "--records", "3000", "--seed", "6", "--odd-names"},
    };
    for (const Strings& options : designs) {
        SCOPED_TRACE(testing::PrintToString(options));
        makeDesign(options);
        expectViewsOfOneRun();
        EXPECT_THAT(readFile(tools / "log"), testing::Not(testing::HasSubstr("doubtful")));
    }
}

TEST_F(DefaultRun, leavesTheRemainderOutOfANetSelection) {
    makeDesign();
    ASSERT_EQ(run({"-z", "-n", "GND", "design.mcm", "out.vlx"}).exitCode, 0);
    const auto entries = packed(directory / "out.vlx");
    const std::string control = connectivityControl(entries, {"GND"});
    Records expected = records(runByHand(control));
    EXPECT_FALSE(expected.empty());
    const Records remainder = records(runByHand(entries.at("extracta_control_connremainder.txt")));
    expected.insert(expected.end(), remainder.begin(), remainder.end());
    std::ranges::sort(expected);
    EXPECT_EQ(records(entries.at("conn.txt")), expected);
    EXPECT_EQ(entries.count("extracta_control_conn1_VDD_CORE_PIN.txt"), 0U);
}

TEST_F(DefaultRun, startsItsProcessesInOrderAndSplitsTheLargestNets) {
    useSurvey({{"A", 2}, {"B", 2}, {"C", 3}, {"x y", 3}, {"Z'", 5}, {"a", 1}});
    ASSERT_EQ(run({"-z", "design.mcm", "out.vlx"}).exitCode, 0);
    EXPECT_THAT(
        afterTheSurvey(order()),
        ElementsAre("conn0_Z__CONDUCTOR_ETCH", "conn0_Z__PIN", "conn0_Z__VIA_CLASS",
                    "conn1_x_y_CONDUCTOR_ETCH", "conn1_x_y_PIN", "conn1_x_y_VIA_CLASS",
                    "conn2_C_CONDUCTOR_ETCH", "conn2_C_PIN", "conn2_C_VIA_CLASS",
                    "conn3_B_CONDUCTOR_ETCH", "conn3_B_PIN", "conn3_B_VIA_CLASS", "connremainder"));
    const auto entries = packed(directory / "out.vlx");
    const std::string conn = entries.at("conn.txt");
    EXPECT_EQ(header(conn), "A!F!\r\nJ!extracta_control_conn0_Z__CONDUCTOR_ETCH!\r\n");
    EXPECT_EQ(records(conn).size(), 13U);
    EXPECT_TRUE(conn.ends_with("S!extracta_control_connremainder!\r\n"));
    EXPECT_NE(entries.at("extracta_control_connremainder.txt")
                  .find("\tNET_NAME !='Z''\r\n\tNET_NAME !='x y'\r\n\tNET_NAME !='C'\r\n"
                        "\tNET_NAME !='B'\r\n"),
              std::string::npos);
    EXPECT_THAT(readFile(tools / "log"),
                testing::ContainsRegex("warning: the view net is doubtful: .*net.txt: column 1 of "
                                       "its A! line is \"F\", asked for was \"NET_NAME\""));
}

TEST_F(DefaultRun, keepsNamesOfNetsOffTheLinesOfAControlFile) {
    useSurvey({{"A\n\tOR\n\tCLASS = PIN", 9}, {"B\rEND", 9}, {"../../C", 2}, {"$(touch x)", 1}});
    ASSERT_EQ(run({"-z", "design.mcm", "out.vlx"}).exitCode, 0);
    const Strings started = afterTheSurvey(order());
    ASSERT_EQ(started.size(), 6U + 1U);
    EXPECT_EQ(started[0], "conn0_______C_CONDUCTOR_ETCH");
    EXPECT_EQ(started[3], "conn1___touch_x__CONDUCTOR_ETCH");
    EXPECT_EQ(files(), (std::set<std::string>{"design.mcm", "order", "out.vlx"}));
}

TEST_F(DefaultRun, leavesNamesTooLongForAFileToTheRemainder) {
    // "extracta_control_conn0_" and "_CONDUCTOR_ETCH.txt" take 42 of the 255 bytes, or of the 259
    // characters of a path that any program for Windows takes.
    const std::string folder = nameThere(directory / "extract1234567890") + "/";
    const std::size_t most = hereOrOnWindows(std::size_t{255}, 259 - folder.size()) - 42;
    const std::string longest(most, 'L');
    const std::string tooLong(most + 1, 'T');
    useSurvey({{tooLong, 9}, {longest, 8}, {"C", 3}, {"D", 2}, {"E", 1}});
    environment["TKCORE_LOG"] = "0:-";
    const Outcome outcome = run({"-z", "design.mcm", "out.vlx"});
    ASSERT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.errors, testing::HasSubstr("warning: the net \"" + tooLong + "\" is left"));
    const Strings started = afterTheSurvey(order());
    ASSERT_EQ(started.size(), 12U + 1U);
    EXPECT_EQ(started[0], "conn0_" + longest + "_CONDUCTOR_ETCH");
    EXPECT_EQ(started[9], "conn3_E_CONDUCTOR_ETCH");
}

TEST_F(DefaultRun, saysWhatIsDoubtfulOfItsSuccess) {
    makeDesign();
    const struct {
        const char* fault;
        const char* nets;
        const char* warning;
    } cases[] = {
        {"layer=no-output", "GND", "warning: the view layer is doubtful: "},
        {"paddef=empty-output", "GND", "warning: the view paddef is doubtful: "},
        {"component=half-line", "GND", "warning: the view component is doubtful: "},
        {"GND=empty-output", "GND", "warning: the view conn is doubtful: "},
        {"remainder=empty-output", "GND", "warning: the view conn is doubtful: "},
        {"outline=header-only", "GND", "warning: the view outline is doubtful: "},
        {"", "GND,NONE", "warning: the selected net \"NONE\" has no connectivity record"},
        {"", "GND, VDD", "warning: the selected net \" VDD\" has a blank at an end of its name"},
        {"", "A,B,C,D,E,F,G,H,I,J,K,L", "warning: 12 nets are selected: more than 11 restrict"},
        {"", "GND", ""},
    };
    for (const auto& [fault, nets, warning] : cases) {
        environment["EXTRACTA_STANDIN_FAULT"] = fault;
        environment["TKCORE_LOG"] = "0:-";
        const Outcome outcome = run({"-z", "-n", nets, "design.mcm", "out.vlx"});
        EXPECT_EQ(outcome.exitCode, 0) << fault;
        EXPECT_THAT(outcome.errors, testing::HasSubstr(warning)) << fault;
        if (std::string(warning).empty()) {
            EXPECT_EQ(outcome.errors, "");
        }
    }
}

TEST_F(DefaultRun, fillsTheLimitOfProcessesButNeverExceedsIt) {
    makeDesign();
    environment["EXTRACTA_STANDIN_TRACE"] = nameThere(tools / "trace");
    for (const int limit : {1, 3, 8}) {
        writeFile(tools / "trace", "");
        // The first children wait for each other. With too low a limit they would wait for ever.
        useScript("write ../started.$pid \nawait-count ../started. " + std::to_string(limit) +
                  "\n" + goOn());
        limitProcesses(limit == 8 ? 1 : limit);
        environment["VELTAR_EXTRACTA_LIMIT"] = limit == 8 ? "8" : "none";
        ASSERT_EQ(run({"-z", "design.mcm", "out.vlx"}).exitCode, 0);
        EXPECT_EQ(
            readFile(tools / "log").find("VELTAR_EXTRACTA_LIMIT is ignored") == std::string::npos,
            limit == 8);
        fs::remove(tools / "log");
        std::multimap<long long, int> changes;
        std::istringstream trace(readFile(tools / "trace"));
        std::string what;
        std::string name;
        for (long long process = 0, time = 0; trace >> what >> name >> process >> time;) {
            changes.emplace(time, what == "start" ? 1 : -1);
        }
        int running = 0;
        int most = 0;
        for (const auto& change : changes) {
            running += change.second;
            most = std::max(most, running);
        }
        EXPECT_GT(changes.size(), 2U * 12U);
        EXPECT_LE(most, limit);
        for (const std::string& file : files()) {
            if (file.starts_with("started.")) {
                fs::remove(directory / file);
            }
        }
    }
}

}  // namespace
