#include <csignal>
#include <functional>
#include <regex>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

using Strings = std::vector<std::string>;

constexpr char kNotCreated[] = "view creation failed (1).\n";
constexpr char kNotPacked[] = "view creation failed (2).\n";
const Strings kCell{"-z", "-cell", "design.mcm", "out.vlx"};
const Strings kDefault{"-z", "design.mcm", "out.vlx"};

/// Runs in which something goes wrong. Checks the output, and that nothing else has changed.
class Fault : public EndToEnd {
public:
    struct Row {
        const char* name;
        Strings arguments;
        std::string logged;  // a part of the log
        std::function<void(Fault&)> prepare;
        int exitCode = 1;
        const char* errors = kNotCreated;
        const char* changes = "";  // pattern for the beginning of each changed path

        friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
    };
    static std::vector<Row> rows();

protected:
    void SetUp() override {
        EndToEnd::SetUp();
        makeDesign();
    }

    void takeRunNames(const std::function<void(const fs::path&)>& take) {
        // Take every name that the run could get in the next seconds.
        environment["TZ"] = "UTC";
        for (long second = std::time(nullptr); second < std::time(nullptr) + 30; ++second) {
            take(directory / ("extract" + std::to_string(second)));
        }
    }
};

std::vector<Fault::Row> Fault::rows() {
    const auto nothing = [](Fault&) {};
    const auto standin = [](const char* failure) {
        return [=](Fault& fault) { fault.environment["EXTRACTA_STANDIN_FAULT"] = failure; };
    };
    const auto standinBesideOthers = [](const char* failure) {
        return [=](Fault& fault) {
            fault.environment["EXTRACTA_STANDIN_FAULT"] = failure;
            fault.limitProcesses(4);
        };
    };
    const auto survey = [](const char* text) {
        return [=](Fault& fault) { fault.useScript(std::string("write $first ") + text + "\n"); };
    };
    const auto extractor = [](const fs::path& path) {
        return [=](Fault& fault) {
            fault.environment["VELTAR_EXTRACTA_PATHOVERRIDE"] = nameThere(path);
        };
    };
    // The disk is full for the log as well, but not for extracta, so the views are complete.
    const auto mostInAFile = [](int size) {
        return [=](Fault& fault) {
            fault.failCalls("MOST_IN_A_FILE", std::to_string(size));
            fault.failCalls("PARENT", std::to_string(getpid()));
        };
    };
    [[maybe_unused]] const auto mostDescriptors = [](rlim_t count) {
        return [=](Fault& fault) { fault.limits = {{RLIMIT_NOFILE, count}}; };
    };
    const auto runNamesTaken = [](const std::function<void(const fs::path&)>& take) {
        return [=](Fault& fault) { fault.takeRunNames(take); };
    };
    const auto folder = [](const char* name, unsigned mode = 0755) {
        return [=](Fault& fault) {
            fs::create_directory(fault.directory / name);
            fs::permissions(fault.directory / name, fs::perms(mode));
        };
    };
    const auto link = [](const char* target, const char* name) {
        return [=](Fault& fault) { fs::create_symlink(target, fault.directory / name); };
    };
    // The design has another name.
    const auto designAt = [](const char* name) {
        return [=](Fault& fault) {
            fs::create_directory(fault.directory / "out");
            fs::rename(fault.design, fault.directory / name);
        };
    };
    const auto readFails = [](const char* file) {
        return [=](Fault& fault) { fault.failCalls("READ_FAILS", file); };
    };
    const auto folderLost = [](Fault& fault) {
        fs::create_directory(fault.directory / "out");
        fault.useScript("remove $folder/out\n" + goOn());
    };
    const auto file = [](const char* name, unsigned mode = 0644) {
        return [=](Fault& fault) {
            fs::create_directory(fault.directory / "mine");
            writeFile(fault.directory / name, "mine");
            fs::permissions(fault.directory / name, fs::perms(mode));
        };
    };
    const auto fifo = [](Fault& fault) { mkfifo((fault.directory / "fifo").c_str(), 0600); };
    // Extracta does this before it continues as the stand-in.
    const auto extractaFirst = [](const std::string& commands) {
        return [=](Fault& fault) { fault.useScript(commands + "\n" + goOn()); };
    };
    // The survey ends before the merge begins.
    const auto surveyLeaves = [=](const std::string& command) {
        return extractaFirst("if connnets " + command + " $run/conn.txt");
    };
    const auto writesFifo = [](const char* view) {
        return [=](Fault& fault) {
            const std::string name = view;
            fault.useScript("if " + name + " make-fifo $first\nunless " + name + " " + goOn());
        };
    };
    const auto packedTo = [](const std::string& path) {
        return Strings{"-z", "-cell", "design.mcm", path};
    };
    const auto movedTo = [](const char* path) { return Strings{"-cell", "design.mcm", path}; };
    const auto withFile = [](const char* path) {
        return Strings{"-z", "-cell", "-add", path, "design.mcm", "out.vlx"};
    };
    const char* noDirectory = "error: cannot create directory ";
    const char* notOpen = "error: cannot create ";
    const char* notReplaced = "error: cannot replace ";
    const char* isDesign = "error: a design is never replaced";
    const char* uncaught = "uncaught exception: ";
    const std::string isFull = hereOrOnWindows(": No space left on device", ": Disk full");
    const std::string notRead = hereOrOnWindows(": Input/output error", ": Not ready");
    constexpr int kAbort = hereOrOnWindows(128 + SIGABRT, 3);
    const char* const likeAView = hereOrOnWindows("mine/layer.txt", "mine/LAYER.TXT");
    return {
        // The extractor fails ...
        {"oneForAll", kCell, "error: extracta run failed: ", standin("=exit:3:bad view")},
        {"killed", kCell, "exit code 137", standin("=kill:9")},
        {"beforeTheSurvey", kDefault, "exit code 3: bad view", standin("layer=exit:3:bad view")},
        {"inTheSurvey", kDefault, "exit code 4: late", standin("connnets=late-exit:4:late")},
        {"afterTheSurvey", kDefault, "error: extraction of conn2", standin("conn2=exit:5:")},
        {"whileOthersHang", kDefault, "exit code 7",
         standinBesideOthers("layer=hang;paddef=hang;fullgeo=sleep:300;fullgeo=exit:7:")},
        {"aFlood", kDefault, "exit code 6: ", standin("fullgeo=flood:3000000:6")},
        // ... or writes unusable files ...
        {"noSurvey", kDefault, "Could not open file: ", standin("connnets=no-output")},
        {"emptySurvey", kDefault, "after successfully parsing the first 0 S records",
         standin("connnets=empty-output")},
        {"bareLineFeeds", kDefault, "txt parsing failed", standin("connnets=bare-line-feeds")},
        {"noNetNames", kDefault, "connnets.txt has no NET_NAME column",
         survey(R"(A!NET!\r\nJ!x!\r\nS!GND!\r\n)")},
        {"shortRow", kDefault, " is too short for its NET_NAME column",
         survey(R"(A!X!NET_NAME!\r\nJ!x!\r\nS!GND\r\n)")},
        {"noPiece", kDefault, "MP failed to open file ", standin("conn1=no-output")},
        // ... or files that cannot be read.
        {"surveyReadError", kDefault, "Could not open file: ", readFails("/connnets.txt")},
        {"pieceReadError", kDefault, "CONDUCTOR_ETCH.txt" + notRead,
         readFails("/conn0_GND_CONDUCTOR_ETCH.txt")},
        {"viewReadError", kDefault, "layer.txt" + notRead, readFails("/layer.txt"), 1, kNotPacked},
        {"viewCutOff", kCell, "layer.txt has become shorter while it was packed: of ",
         [](Fault& fault) { fault.failCalls("READ_ENDS", "/layer.txt"); }, 0, "", "out.vlx"},
        {"surveyIsAFifo", kDefault, "which is neither a file nor a directory",
         writesFifo("connnets")},
        {"pieceIsAFifo", kDefault, "MP failed to open file ", writesFifo("conn1")},
        {"viewIsAFifo", kDefault, "which is neither a file nor a directory", writesFifo("layer"), 1,
         kNotPacked},
        // There is no extractor.
        {"noKeeper", kCell, "error: cannot start ",
         [](Fault& fault) { fault.failCalls("KEEPER_FAILS", ""); }},
        {"noProgramOfThatName", kDefault, "error 2: Could not find application no-such.exe",
         [=](Fault& fault) {
             folder("closed", 0444)(fault);  // a folder that cannot be searched has no program
             fault.environment[hereOrOnWindows("PATH", "WINEPATH")] =
                 nameThere(fault.directory / "closed") + hereOrOnWindows(":/usr/bin:/bin", "");
             extractor("no-such.exe")(fault);
         }},
        {"noProgramAtThatPath", kCell, "error 2: Could not find application " + nameThere("./no"),
         extractor("./no")},
        {"notExecutable", kDefault,
         hereOrOnWindows("error: cannot start ./design.mcm: Permission denied", "with error 193"),
         extractor("./design.mcm")},
        {"ofNoKnownFormat", kCell, hereOrOnWindows("error 8: Exec format error", "error 193"),
         [=](Fault& fault) {
             file("tool", 0755)(fault);
             extractor("./tool")(fault);
         }},
        {"theProgramItself", kDefault, "is the program that would start it",
         extractor(VELEXTRACTA)},
        {"aDirectoryToStart", kCell,
         hereOrOnWindows("error 13: Permission denied", "error 5: Access denied"),
         extractor("/proc")},
        // There is no working directory.
        {"baseNotWritable", movedTo("closed"), noDirectory, folder("closed", 0555)},
        {"baseWithoutFiles", movedTo("/proc"), noDirectory, nothing},
        {"closedFolderOfTheDesign", Strings{"-z", "closed/design.mcm", "out.vlx"},
         "Link the design from a folder of your own",
         [=](Fault& fault) {
             folder("closed")(fault);
             fs::copy(fault.design, fault.directory / "closed/design.mcm");
             fs::permissions(fault.directory / "closed", fs::perms{0555});
         }},
        {"takenByAFolder", kDefault, noDirectory, runNamesTaken([](const fs::path& path) {
             fs::create_directory(path);
             writeFile(path / "layer.txt", "mine");
         })},
        {"takenByAFile", kCell, noDirectory,
         runNamesTaken([](const fs::path& path) { writeFile(path, "mine"); })},
        {"takenByALink", kDefault, noDirectory,
         runNamesTaken([](const fs::path& path) { fs::create_directory_symlink(".", path); })},
        {"workingDirectoryLost", movedTo("out"), "", folderLost, 1, kNotCreated, "out/"},
        // ... or its name leads to something else, which must not change.
        {"workingDirectoryReplaced", kCell,
         hereOrOnWindows("has been replaced by something else", "exit code 99"),
         [=](Fault& fault) {
             folder("mine")(fault);
             writeFile(fault.directory / "mine/layer.txt", "mine");
             fault.useScript("rename $run $folder/moved\nrename $folder/mine $run\n");
         },
         1, hereOrOnWindows(kNotPacked, kNotCreated), hereOrOnWindows("(mine|extract)", "")},
        {"workingDirectoryMoved", kCell,
         hereOrOnWindows("warning: there is nothing to deliver", "exit code 99"),
         [](Fault& fault) { fault.useScript("rename $run $folder/moved\n"); },
         hereOrOnWindows(0, 1), hereOrOnWindows("", kNotCreated), hereOrOnWindows("out.vlx", "")},
        {"workingDirectoryReplacedByALink", Strings{"design.mcm", "out"},
         "has been replaced by something else",
         [=](Fault& fault) {
             folder("out")(fault);
             folder("mine")(fault);
             writeFile(fault.directory / "mine/layer.txt", "mine");
             fault.useScript(R"(write $first A!NET_NAME!\r\nJ!x!\r\nS!GND!\r\n)"
                             "\nif connnets rename $run $folder/moved\n"
                             "if connnets link $folder/mine $run\n");
         },
         1, kNotCreated, "out/extract"},
        // The program replaces a file of its names there, and does not write into it.
        {"aLinkToTheDesignForTheMerge", kDefault, "", surveyLeaves("link $design"), 0, "",
         "out.vlx"},
        {"aHardLinkToTheDesignForTheMerge", kDefault, "", surveyLeaves("hard-link $design"), 0, "",
         "out.vlx"},
        {"aFifoForTheMerge", kDefault, "", surveyLeaves("make-fifo"), 0, "", "out.vlx"},
        {"aLinkForAControlFile", kDefault, "",
         extractaFirst("if connnets link $design $run/extracta_control_connremainder.txt"), 0, "",
         "out.vlx"},
        // Rights are missing.
        {"closedToItsOwner", kDefault, ": Permission denied",
         [](Fault& fault) { fault.useScript("permissions $run 0\n"); }},
        {"closedFoldersInIt", kCell, "exit code 7",
         [](Fault& fault) {
             fault.useScript(
                 "make-folder a\nmake-folder a/b\nwrite a/b/c x\npermissions a/b 0\n"
                 "permissions a 0\nlink $folder/mine b\nexit 7\n");
         }},
        // There is no room.
        {"diskFullInControlFile", kCell, "", mostInAFile(100)},
        {"diskFullInMerge", kDefault, "conn.txt" + isFull, mostInAFile(190'000)},
        {"diskFullInAHiddenArchive", kCell, "out.vlx" + isFull,
         [=](Fault& fault) {
             mostInAFile(30'000)(fault);
             fault.failCalls("NO_UNNAMED_FILES", "");
         },
         1, kNotPacked},
        {"noUnnamedFiles", kCell, "", [](Fault& fault) { fault.failCalls("NO_UNNAMED_FILES", ""); },
         0, "", "out.vlx"},
        {"diskFullInArchive", kCell, "out.vlx" + isFull, mostInAFile(30'000), 1, kNotPacked},
#ifndef __SANITIZE_ADDRESS__  // the sanitizers' check of types opens a pipe, and needs it
        {"fewDescriptors5", kDefault, "", mostDescriptors(5)},
        {"fewDescriptors10", kDefault, "", mostDescriptors(10)},
#endif
        // There is no place for the output.
        {"archiveInNoFolder", packedTo("no/out"), notOpen, nothing, 1, kNotPacked},
        {"archiveInAClosedFolder", packedTo("closed/out"), notOpen, folder("closed", 0555), 1,
         kNotPacked},
        {"archiveInALostFolder", packedTo("out/lost"), notOpen, folderLost, 1, kNotPacked, "out/"},
        {"archiveIsADirectory", packedTo("folder"), "!fs::is_directory(outpath)", folder("folder"),
         1, kNotPacked},
        {"archiveIsAFifo", packedTo("fifo"), notReplaced, fifo, 1, kNotPacked},
        {"archiveInAFolderForReading", packedTo("closed/file"),
         hereOrOnWindows("cannot write to the folder ", notOpen),
         [=](Fault& fault) {
             folder("closed")(fault);
             file("closed/file")(fault);
             fs::permissions(fault.directory / "closed", fs::perms{0555});
         },
         1, kNotPacked},
        {"archiveInTheWorkingDirectoryByALink", packedTo("link/out"),
         "nothing lasts in the working ", extractaFirst("link $run $folder/link"), 1, kNotPacked,
         "link"},
        {"archiveIsReadOnly", packedTo("file"), notReplaced, file("file", 0444), 1, kNotPacked},
        {"archiveOfTooLongAName", packedTo(std::string(300, 'n')), notOpen, nothing, 1, kNotPacked},
        // Windows would take the path for another one.
        {"archiveByAnotherSpelling",
         packedTo(hereOrOnWindows("no/../design.mcm", R"(x.\..\design.mcm)")), notOpen, nothing, 1,
         kNotPacked},
        {"movedByAnotherSpelling", movedTo(hereOrOnWindows("no/../out", "out.")),
         "there is no folder ", folder("out"), 1, kNotPacked},
        {"addedByAnotherSpelling", withFile(hereOrOnWindows("no/../x", R"(x.\..\x)")),
         hereOrOnWindows("cannot be added: it is not", "cannot be added: Invalid name"), file("x"),
         0, "", "out.vlx"},
        {"movedToNoFolder", movedTo("no"), ": fs::is_directory(outpath)", nothing, 1, kNotPacked},
        {"movedToAFile", movedTo("file"),
         hereOrOnWindows("txt: Not a directory", "txt: Path not found"), file("file"), 1,
         kNotPacked},
        {"movedOntoAFullFolder", movedTo("out"), "error: cannot replace the folder ",
         [=](Fault& fault) {
             folder("out")(fault);
             fs::create_directories(fault.directory / "out/layer.txt/mine");
         },
         1, kNotPacked},
        {"aPieceOntoAFullFolder", Strings{"design.mcm", "out"},
         "warning: the views may not be moved",
         [=](Fault& fault) {
             folder("out")(fault);
             fs::create_directories(fault.directory / "out/conn0_GND_PIN.txt/mine");
         },
         1, kNotPacked},
        {"movedToNothing", movedTo(""), "error: the output path is empty", file("layer.txt"), 1,
         kNotPacked},
        // The output is a design.
        {"archiveIsTheDesign", packedTo("design.mcm"), isDesign, nothing, 1, kNotPacked},
        {"archiveLinksToTheDesign", packedTo("link"), isDesign, link("./design.mcm", "link"), 1,
         kNotPacked},
        {"archiveIsAnotherDesign", packedTo("other.McM"), isDesign, file("other.McM"), 1,
         kNotPacked},
        {"archiveLinksToAnotherDesign", packedTo("link"), isDesign,
         [=](Fault& fault) {
             file("other.mcm")(fault);
             link("other.mcm", "link")(fault);
         },
         1, kNotPacked},
        {"movedOntoTheDesign", Strings{"-cell", "out/layer.txt", "out"}, isDesign,
         designAt("out/layer.txt"), 1, kNotPacked},
        {"movedOntoAnotherDesign", Strings{"-cell", "-add", "mine/x.mcm", "out/d", "out"}, isDesign,
         [=](Fault& fault) {
             designAt("out/d")(fault);
             file("mine/x.mcm")(fault);
             writeFile(fault.directory / "out/x.mcm", "another design");
         },
         1, kNotPacked},
        // An added file that exists but cannot be copied ends the program abnormally, without any
        // clean-up; the working directory stays.
        {"addedFileMissing", withFile("no/notes"), "warning: the file no/notes cannot be added",
         nothing, 0, "", "out.vlx"},
        {"addedFileIsAFifo", withFile("fifo"), uncaught, fifo, kAbort, "", "extract"},
        {"addedFileIsADirectory", withFile("mine"), uncaught, file("x"), kAbort, "", "extract"},
        {"addedFileUnreadable", withFile("x"), uncaught, file("x", 0), kAbort, "", "extract"},
        {"addedFileNamedLikeAView", withFile(likeAView), "its name is taken", file(likeAView),
         kAbort, "", "extract"},
    };
}

class FaultMatrix : public Fault, public testing::WithParamInterface<Fault::Row> {};

TEST_P(FaultMatrix, isToldAndLeavesNothing) {
    const Row& row = GetParam();
    writeFile(directory / "out.vlx", "an older archive");
    row.prepare(*this);
    const auto before = contents();
    const Outcome outcome = run(row.arguments);

    EXPECT_EQ(outcome.exitCode, row.exitCode);
    EXPECT_EQ(outcome.errors, row.errors);
    const std::regex output(
        row.exitCode == 0 || outcome.errors == kNotPacked ? "VLX file written: 0x[0-9a-f]+\n" : "");
    EXPECT_TRUE(std::regex_match(outcome.output, output)) << outcome.output;
    EXPECT_TRUE(isEveryProcessGone());
    const std::string log = readFile(tools / "log");
    EXPECT_NE(log.find(row.logged), std::string::npos) << row.logged << " is missing in\n" << log;
    // Exactly the certain failures are reported before anything starts.
    const std::regex certain("(archive|moved|base|fewDescriptors5)(?!InALostFolder).*");
    const std::string beginning = log.substr(0, log.find("*StartChildProcess"));
    EXPECT_EQ(std::regex_search(beginning, std::regex("warning: the (archive|views) will not be")),
              std::regex_match(row.name, certain))
        << beginning;
    const std::string changes = row.changes;
    const std::regex changed(changes + ".*");
    auto after = contents();
    EXPECT_EQ(before == after, changes.empty());
    const auto mayChange = [&](const auto& file) {
        return !changes.empty() && std::regex_match(file.first + '/', changed);
    };
    auto kept = before;
    std::erase_if(kept, mayChange);
    std::erase_if(after, mayChange);
    EXPECT_TRUE(after == kept);
}

INSTANTIATE_TEST_SUITE_P(Run, FaultMatrix, testing::ValuesIn(Fault::rows()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Fault, showsInTheArgumentsBeforeAnythingIsMade) {
    const std::regex missing("mcm file does not exist: 0x[0-9a-f]+\n");
    const auto before = files();
    for (const std::string& path : Strings{"no.mcm", "no/no.mcm", "", std::string(5000, 'x')}) {
        const Outcome outcome = run({"-z", "-cell", path, "out.vlx"});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(std::regex_match(outcome.errors, missing)) << outcome.errors;
    }
    if (!kProgramsForWindows) {
        EXPECT_NE(readFile(tools / "log").find(": No such file or directory"), std::string::npos);
        fs::create_directory(directory / "closed");
        fs::permissions(directory / "closed", fs::perms{});
        run({"-z", "closed/design.mcm", "out.vlx"});
        EXPECT_NE(readFile(tools / "log").find("closed/design.mcm: Permission denied"),
                  std::string::npos);
        fs::remove(directory / "closed");
    }
    for (const Strings& arguments : {Strings{}, Strings{"design.mcm"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output + outcome.errors, "");
    }
    EXPECT_EQ(files(), before);
}

TEST_F(Fault, tellsWhatIsDeliveredWhereThatFailsHalfWay) {
    failCalls("RENAME_FAILS", "cconn.txt");
    fs::create_directory(directory / "out");
    EXPECT_EQ(run({"-cell", "design.mcm", "out"}).errors, kNotPacked);
    const std::string log = readFile(tools / "log");
    std::smatch told;
    ASSERT_TRUE(std::regex_search(
        log, told, std::regex("error: delivered to .*out: (.*); not delivered: (.*)\n")));
    for (const char* name :
         {"layer.txt", "cfullgeo.txt", "cconn.txt", "diestack.txt", "extracta_control.txt"}) {
        const bool isThere = fs::exists(directory / "out" / name);
        EXPECT_NE(told[isThere ? 1 : 2].str().find(name), std::string::npos) << name;
    }
    EXPECT_FALSE(fs::exists(directory / "out/cconn.txt"));
}

TEST_F(Fault, isForetoldOfADiskWithLessRoomThanTheDesignTakes) {
    fs::resize_file(design, 2 * fs::space(directory.path()).available);
    EXPECT_EQ(run(kCell).exitCode, 0);
    EXPECT_NE(readFile(tools / "log").find("warning: the disk of "), std::string::npos);
}

}  // namespace
