#include <csignal>
#include <functional>
#include <regex>

#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

constexpr char kNotCreated[] = "view creation failed (1).\n";
constexpr char kNotPacked[] = "view creation failed (2).\n";

/// Runs that must fail: what stands on the streams, and that nothing else has changed.
class Fault : public EndToEnd {
protected:
    struct Case {
        const char* what;
        Strings arguments;
        const char* standinFault;
        const char* errors;
        const char* logged;  // a part of the log
    };

    void SetUp() override {
        makeDesign();
        environment["TKCORE_LOG"] = "1:" + (tools / "log").string();
    }

    void expectFailure(const Case& fault) {
        SCOPED_TRACE(fault.what);
        environment["EXTRACTA_STANDIN_FAULT"] = fault.standinFault;
        writeFile(tools / "log", "");
        writeFile(directory / "out.vlx", "an older archive");
        const auto before = files();
        const Outcome outcome = run(fault.arguments);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.errors, fault.errors);
        EXPECT_EQ(outcome.output.empty(), std::string(fault.errors) != kNotPacked);
        EXPECT_EQ(files(), before);
        EXPECT_EQ(readFile(directory / "out.vlx"), "an older archive");
        EXPECT_FALSE(anyProcessLeft());
        EXPECT_NE(readFile(tools / "log").find(fault.logged), std::string::npos)
            << fault.logged << " is missing in\n"
            << readFile(tools / "log");
    }
};

const std::vector<std::string> kCell{"-z", "-cell", "design.mcm", "out.vlx"};
const std::vector<std::string> kDefault{"-z", "design.mcm", "out.vlx"};

TEST_F(Fault, ofExtractaEndsTheRunWithNothingLeft) {
    const Case cases[] = {
        {"single process", kCell, "=exit:3:bad view", kNotCreated, "error: extracta run failed: "},
        {"killed", kCell, "=kill:9", kNotCreated, "exit code 137"},
        {"before the survey", kDefault, "layer=exit:3:bad view", kNotCreated,
         "error: createExtractaControlFileAndViewsMP: extracta exited with non-zero exit code 3: "
         "bad view"},
        {"in the survey", kDefault, "connnets=late-exit:4:late", kNotCreated, "exit code 4: late"},
        {"after the survey", kDefault, "conn2=exit:5:", kNotCreated, "Extracta conn2"},
        {"in the remainder", kDefault, "remainder=kill:11", kNotCreated, "exit code 139"},
        {"survey missing", kDefault, "connnets=no-output", kNotCreated, "Could not open file: "},
        {"survey empty", kDefault, "connnets=empty-output", kNotCreated,
         "connnets.txt parsing failed after successfully parsing the first 0 S records"},
        {"survey cut off", kDefault, "connnets=half-line", kNotCreated, "parsing failed after"},
        {"survey of a header", kDefault, "connnets=header-only", kNotCreated, "parsing failed"},
        {"survey with LF", kDefault, "connnets=bare-line-feeds", kNotCreated, "parsing failed"},
        {"piece missing", kDefault, "conn1=no-output", kNotCreated,
         "error: createExtractaControlFileAndViewsMP: createExtractaControlFileAndViewsMP failed "
         "to open file /"},
        {"a flood", kDefault, "fullgeo=flood:3000000:6", kNotCreated, "exit code 6: "},
    };
    for (const Case& fault : cases) {
        expectFailure(fault);
    }
}

TEST_F(Fault, ofOneEndsTheTreesOfTheOthers) {
    environment["LD_PRELOAD"] = HARDWARE_THREADS;
    environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    environment["HARDWARE_THREADS"] = "8";
    expectFailure({"others hang", kDefault,
                   "layer=hang;paddef=hang;fullgeo=sleep:300;fullgeo=exit:7:", kNotCreated,
                   "exit code 7"});
}

TEST_F(Fault, ofTheSurveysColumnsIsNamed) {
    environment.erase("EXTRACTA_STANDIN_FAULT");
    const struct {
        const char* survey;
        const char* logged;
    } cases[] = {{"A!NET!\\r\\nJ!x!\\r\\nS!GND!\\r\\n", "NET_NAME"},
                 {"A!X!NET_NAME!\\r\\nJ!x!\\r\\nS!GND\\r\\n", "NET_NAME"}};
    for (const auto& [survey, logged] : cases) {
        useScript(std::string("printf '") + survey + "' > \"$first\"\n");
        expectFailure({survey, kDefault, "", kNotCreated, logged});
        EXPECT_NE(readFile(tools / "log").find("connnets.txt"), std::string::npos);
    }
}

TEST_F(Fault, ofTheProgramToStartIsToldApart) {
    writeFile(tools / "text", "no program");
    const struct {
        std::string path;
        const char* logged;
    } cases[] = {
        {"no-such-extracta.exe",
         "CreateProcess failed with error 2: Could not find application no-such-extracta.exe"},
        {"./missing", "error 2: Could not find application ./missing"},
        {tools / "text", "CreateProcess failed with error 13: Permission denied"},
        {tools.path(), "CreateProcess failed with error 13: Permission denied"},
    };
    for (const auto& [path, logged] : cases) {
        environment["VELTAR_EXTRACTA_PATHOVERRIDE"] = path;
        expectFailure({logged, kCell, "", kNotCreated, logged});
        expectFailure({logged, kDefault, "", kNotCreated, logged});
    }
}

TEST_F(Fault, ofTheOutputPathIsAFailedPackaging) {
    const std::string longName(300, 'n');
    writeFile(directory / "file", "mine");
    fs::create_directory(directory / "folder");
    fs::create_directories(directory / "full/layer.txt/mine");
    ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
    const Case cases[] = {
        {"no such folder", {"-z", "-cell", "design.mcm", "no/out"}, "", kNotPacked, "archive"},
        {"under a file", {"-z", "-cell", "design.mcm", "file/out"}, "", kNotPacked, "archive"},
        {"a directory",
         {"-z", "-cell", "design.mcm", "folder"},
         "",
         kNotPacked,
         "!fs::is_directory(outpath)"},
        {"too long", {"-z", "-cell", "design.mcm", longName}, "", kNotPacked, "open archive"},
        {"no file", {"-z", "-cell", "design.mcm", "fifo"}, "", kNotPacked, "open archive failed"},
        {"move to no folder",
         {"-cell", "design.mcm", "no"},
         "",
         kNotPacked,
         ": fs::is_directory(outpath)"},
        {"move to a file", {"-cell", "design.mcm", "file"}, "", kNotPacked, "moveActiveViews"},
    };
    for (const Case& fault : cases) {
        expectFailure(fault);
    }
    EXPECT_EQ(readFile(directory / "file"), "mine");
    expectFailure({"no new folder",
                   {"-cell", "design.mcm", "/proc"},
                   "",
                   kNotCreated,
                   "error: Could not create working directory at \"/proc/extract"});
}

TEST_F(Fault, ofTheArgumentsShowsBeforeAnythingIsMade) {
    const std::regex missing("mcm file does not exist: 0x[0-9a-f]+\n");
    const auto before = files();
    for (const std::string& path : Strings{"no.mcm", "no/no.mcm", "", std::string(5000, 'x')}) {
        const Outcome outcome = run({"-z", "-cell", path, "out.vlx"});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(std::regex_match(outcome.errors, missing)) << outcome.errors;
    }
    for (const Strings& arguments : {Strings{}, Strings{"design.mcm"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output + outcome.errors, "");
    }
    EXPECT_EQ(files(), before);
}

TEST_F(Fault, ofAFullDiskLosesNothing) {
    // A limit on the size of a file stands for the full disk. It holds for the log as well, but
    // not for extracta, so that the views are whole.
    const std::pair<rlim_t, Case> cases[] = {
        {100, {"control file", kCell, "", kNotCreated, ""}},
        {100, {"control files", kDefault, "", kNotCreated, ""}},
        {190'000, {"merge", kDefault, "", kNotCreated, " to combined connectivity file"}},
        {30'000, {"archive", kCell, "", kNotPacked, "error with boost::filesystem"}},
    };
    useScript("ulimit -S -f unlimited\n" + goOn());
    for (const auto& [size, fault] : cases) {
        limits = {{RLIMIT_FSIZE, size}};
        expectFailure(fault);
    }
}

TEST_F(Fault, ofDescriptorsEndsTheRun) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizers' check of types opens a pipe, and reports when it cannot";
#endif
    for (const rlim_t count : {6, 7, 8, 10, 12, 16}) {
        limits = {{RLIMIT_NOFILE, count}};
        SCOPED_TRACE(count);
        const auto before = files();
        const Outcome outcome = run(kDefault);
        EXPECT_EQ(outcome.exitCode, count < 16 ? 1 : 0) << outcome.errors;
        auto after = files();
        after.erase("out.vlx");
        EXPECT_EQ(after, before);
    }
}

TEST_F(Fault, ofATakenDirectoryNameLeavesWhatIsThere) {
    // Every name that the run could get in the next seconds is taken.
    const std::function<void(const fs::path&)> takers[] = {
        [](const fs::path& path) { writeFile(path, "mine"); },
        [](const fs::path& path) {
            fs::create_directory(path);
            writeFile(path / "layer.txt", "mine");
        },
        [this](const fs::path& path) { fs::create_directory_symlink(tools.path(), path); },
    };
    for (const auto& take : takers) {
        const TemporaryDirectory base;
        environment["TZ"] = "UTC";
        for (long second = std::time(nullptr); second < std::time(nullptr) + 30; ++second) {
            take(base / ("extract" + std::to_string(second)));
        }
        const Outcome outcome = run({"-cell", "design.mcm", base.path()});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.errors, kNotCreated);
        for (const auto& entry : fs::directory_iterator(base.path())) {
            const fs::path file = entry.is_directory() && !entry.is_symlink()
                                      ? entry.path() / "layer.txt"
                                      : entry.path();
            EXPECT_TRUE(fs::exists(file));
        }
        EXPECT_FALSE(fs::is_empty(tools.path()));
    }
}

TEST_F(Fault, ofAnAddedFileThatIsNamedLikeAViewEndsTheProgramAbnormally) {
    writeFile(tools / "layer.txt", "mine");
    for (const std::string& added : {(tools / "layer.txt").string(), tools.path().string()}) {
        writeFile(directory / "out.vlx", "an older archive");
        const Outcome outcome = run({"-z", "-cell", "-add", added, "design.mcm", "out.vlx"});
        EXPECT_EQ(outcome.exitCode, 128 + SIGABRT);
        EXPECT_EQ(outcome.output + outcome.errors, "");
        EXPECT_EQ(readFile(directory / "out.vlx"), "an older archive");
        EXPECT_NE(readFile(tools / "log").find("uncaught exception: "), std::string::npos);
        EXPECT_FALSE(anyProcessLeft());
        // Without any clean-up: the working directory stays to be looked at.
        for (const std::string& name : files()) {
            if (name.starts_with("extract") && name.find('/') == std::string::npos) {
                EXPECT_TRUE(fs::exists(directory / name / "cconn.txt"));
                fs::remove_all(directory / name);
            }
        }
    }
    EXPECT_EQ(readFile(tools / "layer.txt"), "mine");
}

TEST_F(Fault, ofTwoRunsInOneSecondNeverMixesTheirFiles) {
    for (int round = 0; round < 5; ++round) {
        ProgramRun first(command({"-z", "-cell", "design.mcm", "first.vlx"}));
        ProgramRun second(command({"-z", "-cell", "design.mcm", "second.vlx"}));
        const Outcome outcomes[] = {first.wait(), second.wait()};
        EXPECT_TRUE(outcomes[0].exitCode == 0 || outcomes[1].exitCode == 0);
        const char* archives[] = {"first.vlx", "second.vlx"};
        for (int n = 0; n < 2; ++n) {
            if (outcomes[n].exitCode == 0) {
                EXPECT_EQ(packed(directory / archives[n]).size(), 5U);
            } else {
                EXPECT_EQ(outcomes[n].errors, kNotCreated);
                EXPECT_FALSE(fs::exists(directory / archives[n]));
            }
            fs::remove(directory / archives[n]);
        }
        EXPECT_EQ(files(), std::set<std::string>{"design.mcm"});
    }
}

TEST_F(Fault, ofAnOutputDirectoryThatDisappearsEndsTheRun) {
    fs::create_directory(directory / "out");
    useScript("mv ../../out ../../moved; " + goOn());
    const Outcome outcome = run({"-cell", "design.mcm", "out"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, kNotCreated);
    EXPECT_FALSE(anyProcessLeft());
}

}  // namespace
