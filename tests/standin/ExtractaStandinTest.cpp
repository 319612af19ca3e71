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

    /// The S records, without the header and the J record.
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

TEST_F(ExtractaStandin, writesTheRecordsThatPassTheFilters) {
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
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        EXPECT_EQ(records(), query.records) << query.filters << query.fields;
    }
}

TEST_F(ExtractaStandin, putsHeaderAndJRecordFirst) {
    executeSql("CREATE TABLE design (value TEXT); INSERT INTO design VALUES ('microns')");
    ASSERT_EQ(extract().exitCode, 0);
    EXPECT_TRUE(read("out.txt").starts_with("A!NET_NAME!\r\nJ!" + there("design.mcm") +
                                            "!microns!\r\nS!GND!\r\n"));
}

TEST_F(ExtractaStandin, refusesWhatTheDesignLacksBeforeItWritesAnything) {
    const std::string good = "NET\n\n\tNET_NAME\n\nEND\n\n";
    const std::pair<const char*, const char*> cases[] = {
        {"LAYER\n\n\t\nEND\n\n", "line 7: the design has no view LAYER"},
        {"NET\n\n\tCOLOUR\n\nEND\n\n", "line 7: the view NET has no field COLOUR"},
        {"NET\n\n\tCOLOUR = 'x'\n\n\tCLASS\n\nEND\n\n", "the view NET has no field COLOUR"},
        {"NET\n\n\tCLASS\n\nEND\n\nNET\n\n\tCLASS\n\nEND\n\n", "has 3 view blocks, but 2 output"},
        {"rubbish\n", "control.txt: line 7: expected a view keyword"},
        {"NET\n\n\tCLASS = 'x\n\n\tCLASS\n\nEND\n\n", "line 9: malformed condition"},
        {"NET\n\n\tCLASS\n", "the file ends inside a view block"},
    };
    for (const auto& [block, complaint] : cases) {
        writeControlFile(good + block);
        const Outcome outcome = extract({"first.txt", "second.txt"});
        expectFailure(outcome, complaint);
        EXPECT_FALSE(std::filesystem::exists(at("first.txt")));
    }
}

TEST_F(ExtractaStandin, saysWhichFileItCannotUse) {
    expectFailure(extract({"no/such/out.txt"}), "cannot open the output file");
    expectFailure(extract({"/dev/full"}), "full: cannot write the output file");
    expectFailure(extract({"design.mcm"}), "is an input and an output at once");
    expectFailure(runProgram({{EXTRACTA_STANDIN, "-m", "a", "b", "c"}, {}, {}, {}}), "expected -k");
    executeSql("INSERT INTO NET VALUES ('A!B', '', '')");
    expectFailure(extract(), "cannot hold the value \"A!B\"");
    writeFile(at("design.mcm"), std::string(4096, 'x'));
    expectFailure(extract(), "file is not a database");
    std::filesystem::remove(at("control.txt"));
    expectFailure(extract(), "cannot read the control file");
}

}  // namespace
