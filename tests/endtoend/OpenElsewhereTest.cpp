#include <optional>

#include "endtoend/EndToEnd.h"

namespace fs = std::filesystem;

namespace {

/// An older view that somebody has open in a way that prevents its replacement.
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
    void letGo() const { writeFile(tools / "enough", ""); }

    std::string log() const { return readFile(tools / "log"); }

    std::optional<ProgramRun> holder;
};

TEST_F(OpenElsewhere, isForetoldAndKeepsAllViewsFromTheirPlaces) {
    const auto before = contents();
    EXPECT_EQ(run({"-cell", "design.mcm", "out"}).errors, "view creation failed (2).\n");
    const std::size_t told = log().find("warning: the views will not be moved: cannot replace");
    EXPECT_LT(told, log().find("*StartChildProcess"));
    EXPECT_TRUE(contents() == before);
}

TEST_F(OpenElsewhere, isWaitedFor) {
    ProgramRun program(command({"-cell", "design.mcm", "out"}));
    ASSERT_TRUE(eventually([this] { return log().find(" finished") != std::string::npos; }));
    letGo();
    EXPECT_EQ(program.wait().exitCode, 0);
    EXPECT_NE(readFile(directory / "out/cconn.txt"), "older");
}

}  // namespace
