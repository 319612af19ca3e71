#include <ctime>
#include <regex>

#include "archive/inside/Piece.h"
#include "endtoend/EndToEnd.h"
#include "support/Contents.h"

namespace fs = std::filesystem;

namespace {

class CellRun : public EndToEnd {
protected:
    static void expectSuccess(const Outcome& outcome) {
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_TRUE(std::regex_match(outcome.output, std::regex("VLX file written: 0x[0-9a-f]+\n")))
            << outcome.output;
    }
};

TEST_F(CellRun, packsTheViewsAndTheControlFileOfOneExtractaRun) {
    makeDesign();
    const auto before = files();
    expectSuccess(run({"-z", "-cell", "design.mcm", "out.vlx"}));
    auto expected = before;
    expected.insert("out.vlx");
    EXPECT_EQ(files(), expected);

    const auto entries = packed(directory / "out.vlx");
    ASSERT_EQ(entries.size(), 5U);
    // The same control file, run by hand, must give the same bytes.
    writeFile(tools / "control", entries.at("extracta_control.txt"));
    Command byHand{
        {EXTRACTA_STANDIN, "-k", "-c", "-m", nameThere(design), "control"}, {}, tools.path(), {}};
    for (const char* view : {"layer", "cfullgeo", "cconn", "diestack"}) {
        byHand.arguments.push_back(std::string(view) + ".txt");
    }
    ASSERT_EQ(runProgram(byHand).exitCode, 0);
    for (const char* view : {"layer.txt", "cfullgeo.txt", "cconn.txt", "diestack.txt"}) {
        EXPECT_EQ(entries.at(view), readFile(tools / view)) << view;
        EXPECT_GT(entries.at(view).size(), 100U) << view;
    }
    const std::regex name(directory.path().string().substr(1) + "/extract[0-9]+/[a-z_]+\\.txt");
    for (const auto& entry : readArchive(directory / "out.vlx")) {
        EXPECT_TRUE(std::regex_match(entry.name, name)) << entry.name;
    }
}

TEST_F(CellRun, startsExtractaWithAbsolutePathsInTheWorkingDirectory) {
    // The oddest name that the system allows.
    const std::string name =
        hereOrOnWindows("a \"b\" \xc3\xa9\xff.mcm", "a 'b' \xc3\xa9\xf0\x9f\x93\xa6.mcm");
    writeFile(directory / name, "");
    fs::create_directory(directory / "out dir");
    useScript("arguments ../../arguments\n");
    expectSuccess(run({"-CELL", name, "out dir"}));
    std::istringstream lines(readFile(directory / "arguments"));
    Strings words;
    for (std::string line; std::getline(lines, line);) {
        words.push_back(nameThere(line));  // with the system's separators
    }
    ASSERT_EQ(words.size(), 10U);
    EXPECT_TRUE(words.back().starts_with(nameThere(directory / "out dir/extract")));
    const std::string working = words.back() + hereOrOnWindows("/", "\\");
    EXPECT_EQ(words, (Strings{"-k", "-c", "-m", nameThere(directory / name),
                              working + "extracta_control.txt", working + "layer.txt",
                              working + "cfullgeo.txt", working + "cconn.txt",
                              working + "diestack.txt", words.back()}));
}

TEST_F(CellRun, movesTextFilesOverOlderOnes) {
    makeDesign();
    fs::create_directory(directory / "out");
    writeFile(directory / "out/layer.txt", "old");
    useScript("write NOTES.TXT \nwrite notes.log \n" + goOn());
    expectSuccess(run({"-cell", "design.mcm", "out"}));
    EXPECT_EQ(files(), (std::set<std::string>{"design.mcm", "out", "out/cconn.txt",
                                              "out/cfullgeo.txt", "out/diestack.txt",
                                              "out/extracta_control.txt", "out/layer.txt"}));
    EXPECT_EQ(readFile(directory / "out/layer.txt").substr(0, 2), "A!");
}

TEST_F(CellRun, packsEverythingThatIsAddedAsOtherProgramsReadIt) {
    makeDesign();
    constexpr std::size_t kPiece = velextracta::Piece::kMostBytes;
    const std::map<std::string, std::string> added{
        {"empty", ""},
        {"read me.pdf", velextracta::viewText(kPiece - 1)},
        {"more", velextracta::viewText(kPiece + 1)},
        {"random", velextracta::randomBytes(2 * kPiece)},
        {"mixed", velextracta::randomBytes(500'000) + std::string(500'000, 'S')}};
    for (const auto& [name, bytes] : added) {
        writeFile(directory / name, bytes);
    }
    useScript("make-folder folder\nwrite folder/inside x\nwrite notes.log \n" + goOn());
    expectSuccess(run({"-z", "-cell", "-add", "empty,read me.pdf,missing,more,random,mixed,",
                       "design.mcm", "out.vlx"}));
    for (const std::string command :
         {"unzip -tq", "7z t -bso0", "python3 -m zipfile -t", "bsdtar -xOf"}) {
        const Strings shell{"/bin/sh", "-c", command + " out.vlx"};
        const Outcome outcome = runProgram({shell, {}, directory.path(), {}});
        EXPECT_EQ(outcome.exitCode, 0) << command << ": " << outcome.errors;
    }
    const auto entries = packed(directory / "out.vlx");
    for (const auto& [name, bytes] : added) {
        EXPECT_TRUE(entries.at(name) == bytes) << name;
    }
    EXPECT_TRUE(entries.contains("notes.log"));
    EXPECT_EQ(entries.size(), 12U);
}

TEST_F(CellRun, takesItsOptionsInEveryFormAndOrder) {
    writeFile(design, "");
    const struct {
        Strings arguments;
        const char* conditions;
    } cases[] = {
        {{"-N", "A,,B", "/n", "C", "-q"},
         "\tNET_NAME ='A'\r\n\tNET_NAME ='B'\r\n\tNET_NAME ='C'\r\n"},
        {{"-n", "A"}, "\tNET_NAME ='A'\r\n"},
        {{"-n", "-cell"}, "\tNET_NAME ='-cell'\r\n"},
        {{"-n"}, "\tNET_NAME ='design.mcm'\r\n"},
        {{}, ""},
    };
    useScript("remove ../control\ncopy $control ../control\n");
    for (const auto& [options, conditions] : cases) {
        Strings arguments{"/Z", "/Cell"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.insert(arguments.end(), {"design.mcm", "out.vlx"});
        expectSuccess(run(arguments));
        std::string found;
        std::istringstream control(readFile(directory / "control"));
        for (std::string line; std::getline(control, line);) {
            const bool isNew = found.find(line) == std::string::npos;
            found += isNew && line.find("NET_NAME =") != std::string::npos ? line + "\n" : "";
        }
        EXPECT_EQ(found, conditions);
    }
}

TEST_F(CellRun, numbersItsDirectoryByTheLocalClock) {
    writeFile(design, "");
    useScript("arguments ../arguments\n");
    const struct {
        const char* zone;
        long offset;
    } cases[] = {{"UTC", 0}, {"XXX-5:30", 19'800}, {"XXX8", -28'800}};
    for (const auto& [zone, offset] : cases) {
        environment["TZ"] = zone;
        const long before = std::time(nullptr) + offset;
        run({"-z", "-cell", "design.mcm", "out.vlx"});
        const std::string arguments = readFile(directory / "arguments");
        const long number = std::stol(arguments.substr(arguments.rfind("extract") + 7));
        EXPECT_GE(number, before);
        EXPECT_LE(number, std::time(nullptr) + offset);
    }
}

TEST_F(CellRun, keepsItsDirectoryForDebugging) {
    makeDesign();
    environment["VELTAR_EXTRACTA_DEBUG"] = "";
    expectSuccess(run({"-z", "-cell", "design.mcm", "out.vlx"}));
    EXPECT_EQ(files().size(), 2U + 1U + 5U);
}

TEST_F(CellRun, keepsTheFirstAndTheLastOfAllThatAFailedExtractorPrinted) {
    constexpr std::size_t kMebibyte = std::size_t{1} << 20U;
    writeFile(design, "");
    environment["TKCORE_LOG"] = "0:" + nameThere(tools / "log");
    useScript("print a\\0b\\n\nflood 2097148\nexit 3\n");
    const std::vector<std::string> run{"-z", "-cell", "design.mcm", "out.vlx"};
    EXPECT_EQ(this->run(run).errors, "view creation failed (1).\n");
    const std::string whole = std::string("exit code 3: a\0b\n", 17);
    const std::size_t before = readFile(tools / "log").find(whole);
    ASSERT_NE(before, std::string::npos);
    EXPECT_GT(readFile(tools / "log").size(), 2 * kMebibyte);
    EXPECT_EQ(readFile(tools / "log").find("left out"), std::string::npos);

    fs::remove(tools / "log");
    useScript("print first\nflood 60000000\nprint last\nexit 3\n");
    const Outcome outcome = this->run(run);
    const std::string log = readFile(tools / "log");
    EXPECT_NE(log.find("exit code 3: firstx"), std::string::npos);
    EXPECT_NE(log.find("[57902857 bytes are left out here]"), std::string::npos);
    EXPECT_NE(log.find("xlast\n"), std::string::npos);
#ifndef __SANITIZE_ADDRESS__
    const long usual = this->run({"-z", "-cell", "missing.mcm", "out.vlx"}).peakMemory;
    EXPECT_LE(outcome.peakMemory - usual, static_cast<long>(64 * kMebibyte));
#endif
}

TEST_F(CellRun, canBeExplainedFromALogOfTheWantedLevel) {
    writeFile(design, "");
    useScript("print ERROR: bad view\nexit 3\n");
    const auto errorsAtLog = [this](const char* setting) {
        environment["TKCORE_LOG"] = setting;
        return run({"-z", "-cell", "design.mcm", "out.vlx"}).errors;
    };
    const std::string failures = errorsAtLog("0:-");
    EXPECT_TRUE(std::regex_search(failures, std::regex("^[0-9]+\\.[0-9]+ "))) << failures;
    for (const char* part :
         {"error: extracta run failed: ", " exited with non-zero exit code 3: ERROR: bad view\n",
          "assertion failed: VelExtracta, line ", ": !\"view creation failed\"\n"}) {
        EXPECT_NE(failures.find(part), std::string::npos) << part << " is missing: " << failures;
    }
    EXPECT_EQ(failures.find("StartChildProcess"), std::string::npos);
    EXPECT_TRUE(
        std::regex_search(errorsAtLog("1:-"), std::regex("StartChildProcess: .*\\.txt\" ")));
    for (const char* setting : {"1:/no/such/folder/log", "x:-", "-", ""}) {
        EXPECT_EQ(errorsAtLog(setting), "view creation failed (1).\n") << setting;
    }
}

}  // namespace
