#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "endtoend/EndToEnd.h"

namespace {

class Signal : public EndToEnd {
protected:
    void SetUp() override {
        EndToEnd::SetUp();
        makeDesign();
        writeFile(directory / "out.vlx", "an older archive");
        before = files();
    }

    void expectNothingLeft() {
        EXPECT_FALSE(anyProcessLeft());
        EXPECT_EQ(files(), before);
    }

    /// A run in which an extraction of the view hangs, with a child of its own.
    ProgramRun startHanging(const std::string& view) {
        environment["EXTRACTA_STANDIN_FAULT"] = view + "=hang";
        environment["EXTRACTA_STANDIN_TRACE"] = tools / "trace";
        writeFile(tools / "trace", "");
        return ProgramRun(command({"-z", "design.mcm", "out.vlx"}));
    }

    bool hangs() const {
        return eventually(
            [&] { return readFile(tools / "trace").find("child ") != std::string::npos; });
    }

    std::set<std::string> before;
};

TEST_F(Signal, endsTheRunCleanlyAtAnyMoment) {
    constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    std::mt19937 random(20);
    // Until well behind the end of a run of this design; the loaded machine decides how far.
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(run({"-z", "design.mcm", "out.vlx"}).exitCode, 0);
    const std::size_t entries = packed(directory / "out.vlx").size();
    const auto length = std::chrono::steady_clock::now() - start;
    int interrupted = 0;
    for (int round = 0; round < 60; ++round) {
        writeFile(directory / "out.vlx", "an older archive");
        const int signal = kSignals[round % 3];
        ProgramRun program(command({"-z", "design.mcm", "out.vlx"}));
        std::this_thread::sleep_for(length * (random() % 1000) / 1000);
        kill(program.id(), signal);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
        kill(program.id(), SIGTERM);  // a second one while the first is obeyed
        const Outcome outcome = program.wait();
        const std::string archive = readFile(directory / "out.vlx");
        if (archive != "an older archive") {
            EXPECT_EQ(packed(directory / "out.vlx").size(), entries);
        }
        EXPECT_TRUE(outcome.exitCode == 128 + signal || outcome.exitCode == 0 ||
                    outcome.exitCode == 128 + SIGTERM)
            << outcome.exitCode;
        if (outcome.exitCode == 0) {
            EXPECT_NE(archive, "an older archive");
        } else {
            ++interrupted;
        }
        expectNothingLeft();
    }
    EXPECT_GE(interrupted, 20);
}

TEST_F(Signal, endsEveryDescendantOfAHangingChild) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ProgramRun program = startHanging("paddef");
        ASSERT_TRUE(hangs());
        EXPECT_TRUE(anyProcessLeft());
        kill(program.id(), signal);
        EXPECT_EQ(program.wait().exitCode, 128 + signal);
        expectNothingLeft();
    }
}

TEST_F(Signal, killsTheChildrenTogetherWithTheProgram) {
    ProgramRun program = startHanging("layer");
    ASSERT_TRUE(hangs());
    kill(program.id(), SIGKILL);
    EXPECT_EQ(program.wait().exitCode, 128 + SIGKILL);
    EXPECT_TRUE(eventually([this] { return !anyProcessLeft(); }));
    EXPECT_EQ(readFile(directory / "out.vlx"), "an older archive");
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
