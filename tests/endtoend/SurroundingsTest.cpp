#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

constexpr char kOlder[] = "older";
constexpr char kShell[] = "/bin/sh";

/// Runs with unusual surroundings: streams, folders, disks, processes.
class Surroundings : public EndToEnd {
protected:
    void SetUp() override {
        EndToEnd::SetUp();
        makeDesign();
    }

    /// The program, started by a shell; "$@" in the shell's commands is its command line.
    Command inShell(const std::string& how, const Strings& arguments) const {
        Command result = command(arguments);
        result.arguments.insert(result.arguments.begin(), {kShell, "-c", how, kShell});
        return result;
    }

    /// A full pipe of that name, whose reader does not read.
    int openFullPipe(const fs::path& path) const {
        mkfifo(path.c_str(), 0600);
        const int pipe = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        const std::string bytes(4096, 'x');
        while (write(pipe, bytes.data(), bytes.size()) > 0) {
        }
        return pipe;
    }

    std::string log() const { return readFile(tools / "log"); }

    void expectOnly(const std::set<std::string>& names) {
        EXPECT_EQ(files(), names);
        EXPECT_TRUE(eventually([this] { return !anyProcessLeft(); }));
    }
};

TEST_F(Surroundings, mayHaveALogThatNobodyReads) {
    const int pipe = openFullPipe(tools / "pipe");
    environment["TKCORE_LOG"] = "0:" + (tools / "pipe").string();
    useScript("write " + (tools / "started").string() + " .\nflood 300000\nexit 3\n");
    ProgramRun program(command({"-z", "-cell", "design.mcm", "out.vlx"}));
    ASSERT_TRUE(eventually([this] { return exists(tools / "started"); }));
    usleep(100'000);
    kill(program.id(), SIGTERM);
    EXPECT_EQ(program.wait().exitCode, 128 + SIGTERM);
    close(pipe);
    expectOnly({"design.mcm"});
}

TEST_F(Surroundings, mayTakeNoOutcomeAfterTheDelivery) {
    const int pipe = openFullPipe(tools / "pipe");
    ProgramRun program(inShell("exec \"$@\" >" + (tools / "pipe").string(),
                               {"-z", "-cell", "design.mcm", "out.vlx"}));
    ASSERT_TRUE(eventually([this] { return exists(directory / "out.vlx"); }));
    kill(program.id(), SIGTERM);
    EXPECT_EQ(program.wait().exitCode, 0);
    close(pipe);
    expectOnly({"design.mcm", "out.vlx"});
}

TEST_F(Surroundings, mayLackStreamsFoldersAndRights) {
    const struct {
        const char* how;
        Strings arguments;
        int exitCode;
        const char* logged;
    } cases[] = {
        {"exec \"$@\" >&- 2>&-", {"-z", "-cell", "design.mcm", "out.vlx"}, 0, ""},
        {"umask 0777; exec \"$@\"",
         {"-z", "-cell", "design.mcm", "out.vlx"},
         1,
         "cannot read the control file"},
        {"ulimit -s 80; exec \"$@\"", {"-z", "-cell", "design.mcm", "out.vlx"}, 0, ""},
        {"mkdir gone; cd gone; rmdir ../gone; exec \"$@\"",
         {"-z", "-cell", design.string(), (directory / "out.vlx").string()},
         0,
         ""},
        {"mkdir gone; cd gone; rmdir ../gone; exec \"$@\"",
         {"-cell", design.string(), "."},
         1,
         "ould not find working directory"},
        {"mkdir gone; cd gone; rmdir ../gone; exec \"$@\"",
         {"-z", "-cell", design.string(), "out.vlx"},
         1,
         "the current directory is not there"},
    };
    for (const auto& [how, arguments, exitCode, logged] : cases) {
        SCOPED_TRACE(how);
        fs::remove(tools / "log");
        EXPECT_EQ(runProgram(inShell(how, arguments)).exitCode, exitCode);
        EXPECT_NE(log().find(logged), std::string::npos) << log();
        EXPECT_EQ(log().find("VLX file"), std::string::npos);
        if (exitCode == 0) {
            EXPECT_EQ(packed(directory / "out.vlx").size(), 5U);
            fs::remove(directory / "out.vlx");
        }
        expectOnly({"design.mcm"});
    }
}

TEST_F(Surroundings, neverHaveTheDesignOrAViewForALog) {
    const std::string untouched = readFile(design);
    fs::create_directory(directory / "out");
    fs::create_hard_link(design, directory / "other");
    mkfifo((directory / "pipe").c_str(), 0600);
    for (const char* log : {"design.mcm", "other", "out/net.txt", "pipe"}) {
        environment["TKCORE_LOG"] = std::string("2:") + log;
        EXPECT_EQ(run({"-cell", "design.mcm", "out"}).exitCode, 0) << log;
    }
    environment["TKCORE_LOG"] = "2:out.vlx";
    EXPECT_EQ(run({"-z", "-cell", "design.mcm", "out.vlx"}).exitCode, 0);
    EXPECT_EQ(packed(directory / "out.vlx").size(), 5U);
    EXPECT_FALSE(exists(directory / "out/net.txt"));
    EXPECT_TRUE(readFile(design) == untouched);
    environment["TKCORE_LOG"] = "2:none.mcm";
    EXPECT_EQ(run({"-z", "none.mcm", "out.vlx"}).errors.find("mcm file does not exist"), 0U);
}

TEST_F(Surroundings, mayInterruptACopyOfAnAddedFile) {
    failCalls("READ_IS_SLOW", "/big");
    fs::create_directory(directory / "out");
    writeFile(directory / "big", std::string(1'000'000, 'b'));
    writeFile(directory / "more", "more");
    for (const char* older : {"out/big", "out/layer.txt", "out.vlx"}) {
        writeFile(directory / older, kOlder);
    }
    const auto before = contents();
    for (Strings arguments :
         {Strings{"-cell", "-add", "big,more", "design.mcm", "out"},
          Strings{"-z", "-cell", "-add", "big,more", "design.mcm", "out.vlx"}}) {
        const fs::path base = arguments.back() == "out" ? directory / "out" : directory.path();
        ProgramRun program(command(arguments));
        ASSERT_TRUE(eventually([&] {
            return std::ranges::any_of(fs::directory_iterator(base), [](const auto& entry) {
                return entry.path().filename().string().starts_with("extract") &&
                       exists(entry.path() / "big");
            });
        }));
        kill(program.id(), SIGTERM);
        const Outcome outcome = program.wait();
        EXPECT_EQ(outcome.exitCode, 128 + SIGTERM);
        EXPECT_EQ(outcome.errors, "view creation failed (2).\n");
        EXPECT_TRUE(contents() == before);
    }
}

/// srun does so just before it launches a job.
TEST_F(Surroundings, mayHaveASubmissionThatLosesTheSignal) {
    const std::string folder = tools.path();
    const std::string there = "cd " + folder + "; ";
    writeScript(tools / "srun",
                "trap '' TERM\nwhile case $1 in --job-name=*) false; esac; do shift; done\n" +
                    there + ": >waits; until [ -e \"${1#*=}\" ]; do sleep 0.02; done; : >ended\n");
    writeScript(tools / "scancel", there + ": >\"${1#--name=}\"\n");
    environment["PATH"] = folder + ":/usr/bin:/bin";
    environment["VELTAR_EXTRACTA_PATHOVERRIDE"] = EXAMPLES "extracta-slurm";
    environment["VELTAR_EXTRACTA_LIMIT"] = "1";
    ProgramRun program(command({"-z", "-cell", "design.mcm", "out.vlx"}));
    EXPECT_TRUE(eventually([this] { return exists(tools / "waits"); }));
    kill(program.id(), SIGTERM);
    EXPECT_EQ(program.wait().exitCode, 128 + SIGTERM);
    EXPECT_TRUE(exists(tools / "ended"));
    expectOnly({"design.mcm"});
}

TEST_F(Surroundings, mayHaveAViewWithoutALineEnd) {
    fs::create_directory(directory / "out");
    useScript("write $run/diestack.txt \ngrow $run/diestack.txt 4000000000\n");
    const Outcome outcome = run({"-cell", "design.mcm", "out"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_LE(outcome.peakMemory, 64L << 20U);
    EXPECT_NE(log().find("warning: the view diestack is doubtful"), std::string::npos);
}

TEST_F(Surroundings, mayLetAStartHang) {
    failCalls("EXECVE_HANGS_UNTIL", (tools / "enough").string());
    ProgramRun program(command({"-z", "-cell", "design.mcm", "out.vlx"}));
    ASSERT_TRUE(eventually([this] { return exists(tools / "enough.awaited"); }));
    kill(program.id(), SIGINT);
    EXPECT_EQ(program.wait().exitCode, 128 + SIGINT);
    EXPECT_EQ(files(), std::set<std::string>{"design.mcm"});
    writeFile(tools / "enough", "");
    expectOnly({"design.mcm"});
}

TEST_F(Surroundings, mayLackTheNullDevice) {
    failCalls("NO_NULL_DEVICE", "");
    EXPECT_EQ(run({"-z", "-cell", "design.mcm", "out.vlx"}).exitCode, 1);
    EXPECT_NE(log().find("no program can be started without /dev/null"), std::string::npos);
    expectOnly({"design.mcm"});
}

/// A run with an extraction that hangs and has a child.
class Hanging : public Surroundings {
protected:
    void SetUp() override {
        Surroundings::SetUp();
        environment["EXTRACTA_STANDIN_FAULT"] = "paddef=hang";
        environment["EXTRACTA_STANDIN_TRACE"] = tools / "trace";
    }
    void awaitHanging() const {
        ASSERT_TRUE(eventually(
            [this] { return readFile(tools / "trace").find("child ") != std::string::npos; }));
    }
};

TEST_F(Hanging, showsKeepersThatNobodyTakesForTheProgram) {
    ProgramRun program(command({"-z", "design.mcm", "out.vlx"}));
    awaitHanging();
    EXPECT_EQ(processesWith(VELEXTRACTA), std::vector<pid_t>{program.id()});
    EXPECT_EQ(processesWith("process-keeper: extracta_control_paddef.txt").size(), 1U);
}

TEST_F(Hanging, endsWithTheProgramWhereTheTableOfProcessesIsThatOfOthers) {
    const std::string apart = "unshare --pid --fork --kill-child sh -c ";
    if (runProgram({{kShell, "-c", apart + "true"}, {}, {}, {}}).exitCode != 0) {
        GTEST_SKIP() << "no right to a space of process numbers of one's own";
    }
    const std::string stay = R"('"$@" & wait; while :; do sleep 1; done' sh "$@")";
    ProgramRun shell(inShell("exec " + apart + stay, {"-z", "design.mcm", "out.vlx"}));
    awaitHanging();
    const auto isRun = [this] { return processesWith("extracta_control_"); };
    EXPECT_GE(isRun().size(), 2U);  // and its keeper
    for (const pid_t process : processesWith(VELEXTRACTA)) {
        if (readFile("/proc/" + std::to_string(process) + "/cmdline").starts_with(VELEXTRACTA)) {
            kill(process, SIGKILL);
        }
    }
    EXPECT_TRUE(eventually([&] { return isRun().empty(); }));
    EXPECT_NE(log().find("warning: /proc does not show this process"), std::string::npos);
}

#ifndef __SANITIZE_ADDRESS__  // which has memory of its own
TEST_F(Surroundings, mayBeOutOfMemoryAtAnyMoment) {
    writeFile(directory / "out.vlx", kOlder);
    const auto before = contents();
    failCalls("PARENT", std::to_string(getpid()));
    constexpr int kBeforeMain = 10;  // some libraries allocate memory before main()
    // In growing steps, because the allocations of the packing are alike.
    for (int number = 1;; number += 1 + number / 25) {
        failCalls("ALLOCATION_FAILS", std::to_string(number));
        const Outcome outcome = run({"-z", "-cell", "design.mcm", "out.vlx"});
        if (outcome.exitCode == 0) {
            EXPECT_EQ(packed(directory / "out.vlx").size(), 5U) << number;
            writeFile(directory / "out.vlx", kOlder);
        } else if (number > kBeforeMain || outcome.exitCode != 128 + SIGABRT) {
            EXPECT_EQ(outcome.exitCode, 1) << number << outcome.errors;
        }
        EXPECT_TRUE(contents() == before) << number << testing::PrintToString(files());
        if (!exists(tools / "allocation-failed")) {
            EXPECT_GT(number, 200);
            return;
        }
        fs::remove(tools / "allocation-failed");
    }
}
#endif

}  // namespace
