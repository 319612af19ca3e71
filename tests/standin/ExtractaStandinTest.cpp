#include <csignal>

#include "standin/Sandbox.h"

namespace {

class ExtractaStandin : public Sandbox {
protected:
    ExtractaStandin() {
        executeSql(
            "CREATE TABLE NET (NET_NAME TEXT, NODE_SORT TEXT, CLASS TEXT);"
            "INSERT INTO NET VALUES ('GND', '3', 'PIN'), ('A''B', '1', 'VIA CLASS'),"
            " (NULL, '2', 'ETCH'), ('', '1', 'ETCH'), (CAST(x'C328FF' AS TEXT), '0', NULL)");
        writeControlFile("NET\n\n\tNET_NAME\n\nEND\n\n");
    }

    // The S records, the header and the J record left out.
    std::string records() const {
        const std::string text = read("out.txt");
        return text.substr(text.find("\r\n", text.find("\r\n") + 2) + 2);
    }
};

struct QueryCase {
    const char* filters;
    const char* fields;
    const char* records;
};

TEST_F(ExtractaStandin, ItWritesTheRecordsThatPassTheFilters) {
    constexpr QueryCase kCases[] = {
        {"", "\tCLASS\n", "S!PIN!\r\nS!VIA CLASS!\r\nS!ETCH!\r\nS!ETCH!\r\nS!!\r\n"},
        {"\tCLASS = VIA CLASS\n\n", "\tNET_NAME\n", "S!A'B!\r\n"},
        {"\tNET_NAME ='A'B'\n\n", "\tCLASS\n", "S!VIA CLASS!\r\n"},
        {"\tNET_NAME ='\xC3\x28\xFF'\n\n", "\tNET_NAME\n", "S!\xC3\x28\xFF!\r\n"},
        {"\tNET_NAME = ''\n\n", "\tNODE_SORT\n", "S!1!\r\nS!2!\r\n"},
        {"\tCLASS != 'ETCH'\n\tCLASS != 'PIN'\n\n", "\tNET_NAME\n",
         "S!A'B!\r\nS!\xC3\x28\xFF!\r\n"},
        {"\tCLASS = PIN\n\tNODE_SORT = '3'\n\tOR\n\tCLASS = ETCH\n\tNODE_SORT = '1'\n\n",
         "\tCLASS\n", "S!PIN!\r\nS!ETCH!\r\n"},
        {"", "\tNODE_SORT\n\tCLASS\n",
         "S!0!!\r\nS!1!VIA CLASS!\r\nS!1!ETCH!\r\nS!2!ETCH!\r\nS!3!PIN!\r\n"},
        {"\tCLASS = 'ETCH'\n\n", "\t", "S!!2!ETCH!\r\nS!!1!ETCH!\r\n"},
    };
    for (const QueryCase& query : kCases) {
        writeControlFile(std::string("NET\n\n") + query.filters + query.fields + "\nEND\n\n");
        const Outcome outcome = extract();
        EXPECT_TRUE(succeeded(outcome)) << outcome.printed;
        EXPECT_EQ(records(), query.records) << query.filters << query.fields;
    }
}

TEST_F(ExtractaStandin, ItPutsHeaderAndJRecordFirst) {
    executeSql("CREATE TABLE design (value TEXT); INSERT INTO design VALUES ('microns')");
    ASSERT_TRUE(succeeded(extract()));
    EXPECT_TRUE(read("out.txt").starts_with("A!NET_NAME!\r\nJ!" + at("design.mcm") +
                                            "!microns!\r\nS!GND!\r\n"));
}

TEST_F(ExtractaStandin, ItRefusesWhatTheDesignLacksBeforeItWritesAnything) {
    const std::string good = "NET\n\n\tNET_NAME\n\nEND\n\n";
    const std::pair<const char*, const char*> cases[] = {
        {"LAYER\n\n\t\nEND\n\n", "line 7: the design has no view LAYER"},
        {"NET\n\n\tCOLOUR\n\nEND\n\n", "line 7: the view NET has no field COLOUR"},
        {"NET\n\n\tCOLOUR = 'x'\n\n\tCLASS\n\nEND\n\n", "the view NET has no field COLOUR"},
        {"NET\n\n\tCLASS\n\nEND\n\nNET\n\n\tCLASS\n\nEND\n\n", "has 3 view blocks, but 2 output"},
        {"rubbish\n", "control.txt: line 7: expected a view keyword"},
    };
    for (const auto& [block, complaint] : cases) {
        writeControlFile(good + block);
        const Outcome outcome = extract({"first.txt", "second.txt"});
        EXPECT_TRUE(failedWith(outcome, complaint)) << outcome.printed;
        EXPECT_FALSE(std::filesystem::exists(at("first.txt")));
    }
}

TEST_F(ExtractaStandin, ItSaysWhichFileItCannotUse) {
    EXPECT_TRUE(failedWith(extract({"no/such/out.txt"}), "cannot open the output file"));
    EXPECT_TRUE(failedWith(extract({"/dev/full"}), "/dev/full: cannot write the output file"));
    EXPECT_TRUE(failedWith(extract({"design.mcm"}), "is an input and an output at once"));
    EXPECT_TRUE(failedWith(start({EXTRACTA_STANDIN_PATH, "-m", "a", "b", "c"}), "expected -k"));
    executeSql("INSERT INTO NET VALUES ('A!B', '', '')");
    EXPECT_TRUE(failedWith(extract(), "cannot hold the value \"A!B\""));
    std::ofstream(at("design.mcm")) << std::string(4096, 'x');
    EXPECT_TRUE(failedWith(extract(), "file is not a database"));
    std::filesystem::remove(at("control.txt"));
    EXPECT_TRUE(failedWith(extract(), "cannot read the control file"));
}

struct FaultCase {
    const char* rules;
    int exitCode;
    const char* printed;
    const char* beginning;  // of the output; null where there is no output file
};

TEST_F(ExtractaStandin, ItMisbehavesAsToldWhenTheOutputsNameMatches) {
    constexpr FaultCase kCases[] = {
        {"net=exit:3:no", 0, "", "A!NET_NAME!\r\nJ!"},
        {"out=exit:3:ERROR: bad view", 3, "ERROR: bad view", nullptr},
        {"other=exit:4:no;=late-exit:5:late", 5, "late", "A!NET_NAME!\r\nJ!"},
        {"=no-output", 0, "", nullptr},
        {"=empty-output", 0, "", ""},
        {"=half-line", 0, "", "A!NET"},
        {"=header-only", 0, "", "A!NET_NAME!\r\n"},
        {"=bare-line-feeds", 0, "", "A!NET_NAME!\nJ!"},
        {"=flood:12:0", 0, "extracta is ", "A!NET_NAME!\r\nJ!"},
        {"=flood:8:7", 7, "extracta", nullptr},
        {"=sleep:1", 0, "", "A!NET_NAME!\r\nJ!"},
    };
    for (const FaultCase& fault : kCases) {
        SCOPED_TRACE(fault.rules);
        std::filesystem::remove(at("out.txt"));
        ::setenv("EXTRACTA_STANDIN_FAULT", fault.rules, 1);
        const Outcome outcome = extract();
        EXPECT_EQ(WEXITSTATUS(outcome.waitStatus), fault.exitCode);
        EXPECT_EQ(outcome.printed, fault.printed);
        const std::string text = read("out.txt");
        const std::string beginning = fault.beginning == nullptr ? "" : fault.beginning;
        EXPECT_EQ(std::filesystem::exists(at("out.txt")), fault.beginning != nullptr);
        EXPECT_TRUE(text.starts_with(beginning)) << text;
        EXPECT_EQ(text.size() > beginning.size(), beginning.ends_with("J!")) << text;
    }
}

TEST_F(ExtractaStandin, ItRefusesFaultRulesItDoesNotKnow) {
    for (const char* rules : {"exit:1:x", "=explode", "=exit:256:x", "=sleep:", "=hang:1"}) {
        ::setenv("EXTRACTA_STANDIN_FAULT", rules, 1);
        EXPECT_TRUE(failedWith(extract(), "EXTRACTA_STANDIN_FAULT: ")) << rules;
    }
}

TEST_F(ExtractaStandin, ItTracesItsEndUnlessItIsKilled) {
    ::setenv("EXTRACTA_STANDIN_TRACE", at("trace").c_str(), 1);
    ASSERT_TRUE(succeeded(extract()));
    ::setenv("EXTRACTA_STANDIN_FAULT", "=kill:9", 1);
    const Outcome killed = extract();
    EXPECT_EQ(WTERMSIG(killed.waitStatus), SIGKILL);
    std::istringstream trace(read("trace"));
    std::string events;
    for (std::string event, name, pid, time; trace >> event >> name >> pid >> time;) {
        events += event + ' ' + name + '\n';
    }
    EXPECT_EQ(events, "start out.txt\nend out.txt\nstart out.txt\n");
}

}  // namespace
