#include <chrono>
#include <optional>
#include <thread>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

/// An older view, or an older archive of that name, that somebody has open in a way that prevents
/// its replacement.
class OpenElsewhere : public EndToEnd {
protected:
    void SetUp() override {
        EndToEnd::SetUp();
        makeDesign();
        fs::create_directory(directory / "out");
        writeFile(directory / "out/cconn.txt", "older");
        writeProgram(tools / "holder", "hold " + nameThere(directory / "out/cconn.txt") +
                                           "\nwrite " + nameThere(tools / "held") + " .\nawait " +
                                           nameThere(tools / "enough") + "\n");
        holder.emplace(Command{{tools / "holder.exe"}, {}, {}, {}});
        ASSERT_TRUE(eventually([this] { return fs::exists(tools / "held"); }));
    }
    void TearDown() override {
        letGo();
        EndToEnd::TearDown();
    }
    void awaitViews() const {
        EXPECT_TRUE(eventually([this] { return log().find(" finished") != std::string::npos; }));
    }
    void letGo() const { writeFile(tools / "enough", ""); }

    std::string log() const { return readFile(tools / "log"); }

    const Strings kMoved{"-cell", "design.mcm", "out"};
    const Strings kPacked{"-z", "-cell", "design.mcm", "out/cconn.txt"};
    std::optional<ProgramRun> holder;
};

TEST_F(OpenElsewhere, isForetoldAndKeepsEverythingInItsPlace) {
    const auto before = contents();
    for (const Strings& arguments : {kMoved, kPacked}) {
        writeFile(tools / "log", "");
        EXPECT_EQ(run(arguments).errors, "view creation failed (2).\n");
        const std::size_t told = log().find(": cannot replace ");
        EXPECT_LT(told, log().find("*StartChildProcess"));
        EXPECT_TRUE(contents() == before);
    }
}

TEST_F(OpenElsewhere, isWaitedFor) {
    ProgramRun program(command(kMoved));
    awaitViews();
    letGo();
    EXPECT_EQ(program.wait().exitCode, 0);
    EXPECT_NE(readFile(directory / "out/cconn.txt"), "older");
}

TEST_F(OpenElsewhere, isWaitedForUntilTheRunIsToEnd) {
    const auto before = contents();
    for (const Strings& arguments : {kMoved, kPacked}) {
        writeFile(tools / "log", "");
        ProgramRun program(command(arguments));
        awaitViews();
        std::this_thread::sleep_for(std::chrono::milliseconds(500));  // by then it waits
        kill(program.id(), SIGINT);
        EXPECT_EQ(program.wait().exitCode, 0x3A);
        EXPECT_TRUE(eventually([&] { return contents() == before; }));
    }
}

TEST_F(EndToEnd, keepsAnOlderArchiveIfNobodyMayListTheNewViews) {
    makeDesign();
    writeFile(directory / "out.vlx", "older");
    useScript("write " + nameThere(tools / "made") + " .\nawait " + nameThere(tools / "enough") +
              "\n");
    ProgramRun program(command({"-z", "-cell", "design.mcm", "out.vlx"}));
    ASSERT_TRUE(eventually([this] { return fs::exists(tools / "made"); }));
    for (const std::string& name : files()) {
        if (name.find('/') == std::string::npos && name.starts_with("extract")) {
            fs::permissions(directory / name, fs::perms(0311));
        }
    }
    writeFile(tools / "enough", "");
    EXPECT_EQ(program.wait().exitCode, 1);
    EXPECT_EQ(readFile(directory / "out.vlx"), "older");
}

}  // namespace
