#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

constexpr char kOlder[] = "an older archive";

class Signal : public EndToEnd {
protected:
    void SetUp() override {
        EndToEnd::SetUp();
        environment["LD_PRELOAD"] = hereOrOnWindows("", SYSTEM_CALLS);  // for its fork
        makeDesign();
        writeFile(directory / "out.vlx", kOlder);
        before = files();
    }

    void expectNothingLeft() {
        EXPECT_TRUE(isEveryProcessGone());
        EXPECT_EQ(files(), before) << readFile(tools / "log");
    }

    /// A run in which an extraction of the view hangs, with a child of its own.
    ProgramRun startHanging(const std::string& view) {
        environment["EXTRACTA_STANDIN_FAULT"] = view + "=hang";
        environment["EXTRACTA_STANDIN_TRACE"] = nameThere(tools / "trace");
        writeFile(tools / "trace", "");
        return ProgramRun(command({"-z", "design.mcm", "out.vlx"}));
    }

    bool hangs() const {
        return eventually(
            [&] { return readFile(tools / "trace").find("child ") != std::string::npos; });
    }

    std::set<std::string> before;
};

struct Ending final {
    int signal;
    int exitCode;  // of a program for Windows: the lowest byte of 0xC000013A
    int rounds;
    int second;  // sent while the run ends by the first

    friend void PrintTo(const Ending& ending, std::ostream* out) { *out << ending.signal; }
};

const std::vector<Ending> kEndings = hereOrOnWindows<std::vector<Ending>>(
    {{SIGINT, 128 + SIGINT, 20, SIGTERM},
     {SIGTERM, 128 + SIGTERM, 20, SIGTERM},
     {SIGHUP, 128 + SIGHUP, 10, SIGTERM},
     {SIGUSR1, 128 + SIGUSR1, 5, SIGTERM},
     {SIGXCPU, 128 + SIGXCPU, 5, SIGTERM},
     {SIGKILL, 128 + SIGKILL, 20, SIGKILL}},
    {{SIGINT, 0x3A, 20, SIGINT}, {SIGKILL, 128 + SIGKILL, 20, SIGKILL}});

class EndedRun : public Signal, public testing::WithParamInterface<Ending> {
protected:
    /// Expects only what a run without time to clean up leaves: its working directory and, at the
    /// one moment when it is neither unnamed nor in its place, the archive.
    void expectCleanEnd() {
        if (GetParam().signal == SIGKILL) {
            EXPECT_TRUE(eventually([this] { return !anyProcessLeft(); }));
            for (const std::string& name : files()) {
                if (name.starts_with("extract") || name.starts_with(".unfinished")) {
                    unfinished += name.starts_with(".") ? 1 : 0;
                    fs::remove_all(directory / name);
                }
            }
        }
        expectNothingLeft();
    }

    int unfinished = 0;
};

INSTANTIATE_TEST_SUITE_P(By, EndedRun, testing::ValuesIn(kEndings), [](const auto& ending) {
    return "signal" + std::to_string(ending.param.signal);
});

TEST_P(EndedRun, isCleanAtAnyMoment) {
    std::mt19937 random(20);
    // Until well after the end of a run of this design, however slow the machine is.
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(run({"-z", "design.mcm", "out.vlx"}).exitCode, 0);
    const std::size_t entries = packed(directory / "out.vlx").size();
    const auto length = std::chrono::steady_clock::now() - start;
    const auto& [signal, exitCode, rounds, second] = GetParam();
    int ended = 0;
    for (int round = 0; round < rounds; ++round) {
        writeFile(directory / "out.vlx", kOlder);
        writeFile(tools / "log", "");
        ProgramRun program(command({"-z", "design.mcm", "out.vlx"}));
        std::this_thread::sleep_for(length * (random() % 1000) / 1000);
        kill(program.id(), signal);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
        kill(program.id(), second);
        const Outcome outcome = program.wait();
        const std::string archive = readFile(directory / "out.vlx");
        if (archive != kOlder) {
            EXPECT_EQ(packed(directory / "out.vlx").size(), entries);
        }
        // Before a program for Windows has begun, the launcher gets the signal.
        const bool hasBegun = !kProgramsForWindows || !readFile(tools / "log").empty();
        const bool isDone = outcome.exitCode == 0 && archive != kOlder;
        const bool isEnded = outcome.exitCode == exitCode || outcome.exitCode == 128 + second;
        // An internal error of the emulator, when a signal comes during a start.
        const bool isHit = kProgramsForWindows &&
                           readFile(tools / "log").find("with error 1359") != std::string::npos;
        EXPECT_TRUE(isDone || isEnded || !hasBegun || isHit)
            << outcome.exitCode << " in round " << round << ":\n"
            << readFile(tools / "log");
        // A signal may cut a start short.
        EXPECT_EQ(readFile(tools / "log").find("failed with error 4:"), std::string::npos);
        ended += isEnded && hasBegun ? 1 : 0;
        expectCleanEnd();
    }
    EXPECT_GE(ended, rounds / 3);
    EXPECT_LE(unfinished, 2);
}

TEST_P(EndedRun, takesEveryDescendantOfAHangingChildWithIt) {
    ProgramRun program = startHanging("paddef");
    ASSERT_TRUE(hangs());
    EXPECT_TRUE(anyProcessLeft());
    kill(program.id(), GetParam().signal);
    EXPECT_EQ(program.wait().exitCode, GetParam().exitCode);
    EXPECT_EQ(readFile(directory / "out.vlx"), kOlder);
    expectCleanEnd();
}

#ifndef __SANITIZE_ADDRESS__  // which has memory of its own
TEST_F(Signal, endsEverythingThoughAKeeperHasNoMemoryLeft) {
    failCalls("KEEPER_WITHOUT_MEMORY", "");
    ProgramRun program = startHanging("layer");
    ASSERT_TRUE(hangs());
    kill(program.id(), SIGTERM);
    EXPECT_EQ(program.wait().exitCode, 128 + SIGTERM);
    expectNothingLeft();
}
#endif

TEST_F(Signal, hidesNoEndOfAChildWhereTheCallerIgnoresThose) {
    std::signal(SIGCHLD, SIG_IGN);
    ProgramRun program(command({"-z", "design.mcm", "out.vlx"}));
    std::signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(program.wait().exitCode, 0);
}

TEST_F(Signal, staysIgnoredWhereTheCallerIgnoresIt) {
    environment["EXTRACTA_STANDIN_FAULT"] = "layer=sleep:300";
    environment["EXTRACTA_STANDIN_TRACE"] = tools / "trace";
    std::signal(SIGHUP, SIG_IGN);
    ProgramRun program(command({"-z", "design.mcm", "out.vlx"}));
    std::signal(SIGHUP, SIG_DFL);
    ASSERT_TRUE(
        eventually([&] { return readFile(tools / "trace").find("start ") != std::string::npos; }));
    kill(program.id(), SIGHUP);
    EXPECT_EQ(program.wait().exitCode, 0);
}

}  // namespace
