#include "tkcore/programs/ProcessTest.h"

#include <cstdlib>
#include <system_error>

namespace {

namespace fs = std::filesystem;
using tkcore::AString;

std::error_condition meaningOf(int systemError) {
    return std::error_code(systemError, std::system_category()).default_error_condition();
}

TEST_F(Process, hasItsArgumentsUnsplitAndWithoutTheQuotesAroundThem) {
    const fs::path program =
        writeProgram(directory / "print arguments", "arguments given\nprint out \ncomplain err");
    ASSERT_EQ(
        start({AString("\"" + program.string() + "\""), "-k", "\"/a b/c.mcm\"", "\"", "say \"it\"",
               "\"a\"b\"", "\"C:/a\\b/c\"", "", "$HOME *", "\\\"\\\\", "c:\\a b\\", "\xC3\xA9"}),
        0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(child->output().text(), "out err");
    EXPECT_EQ(readFile(directory / "given"),
              "-k\n/a b/c.mcm\n\"\nsay \"it\"\na\"b\n" +
                  std::string(isHere(On::kPosix) ? "C:/a\\b/c" : "C:\\a\\b\\c") +
                  "\n\n$HOME *\n\\\"\\\\\nc:\\a b\\\n\xC3\xA9\n" + directory.path().string() +
                  "\n");
}

TEST_F(Process, reportsHowItEnded) {
    const struct {
        const char* commands;
        int code;
        On system = On::kBoth;
    } cases[] = {{"exit 0", 0},
                 {"exit 3", 3},
                 {"exit 255", 255},
                 {"end-by 9", 137, On::kPosix},
                 {"end-by 15", 143, On::kPosix},
                 {"end-by 10", 138, On::kPosix},
                 {"exit 259", 259, On::kWindows},
                 {"exit 3221225477", static_cast<int>(0xC0000005), On::kWindows}};
    for (const auto& [commands, code, system] : cases) {
        if (isHere(system)) {
            ASSERT_EQ(startProgram(commands), 0);
            EXPECT_EQ(waitForEnd(), code) << commands;
        }
    }
}

TEST_F(Process, isNoMoreWaitedForOnceItIsOutOfTheWatch) {
    ASSERT_EQ(startProgram("exit 0"), 0);
    tkcore::ChildWatch watch;
    watch.add(*child);
    watch.remove(*child);
    watch.wait();  // returns
    EXPECT_EQ(waitForEnd(), 0);
}

TEST_F(Process, isLookedUpAlongPathOnly) {
    const char* path = std::getenv("PATH");
    const std::string oldPath = path == nullptr ? "" : path;
    fs::create_directory(directory / "bin");
    fs::create_directories(directory / "other/folder");
    writeProgram(directory / "bin/tool", "print found");
    writeProgram(directory / "here", "print wrong");
    writeFile(directory / "other/tool", "not executable");
    const std::string separator = isHere(On::kPosix) ? ":" : ";";
    setVariable("PATH", (directory / "other").string() + separator + separator +
                            (directory / "bin").string());
    EXPECT_EQ(start({"tool"}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(child->output().text(), "found");
    const fs::path before = fs::current_path();
    fs::current_path(directory.path());
    EXPECT_EQ(meaningOf(start({"here"})), std::errc::no_such_file_or_directory);
    fs::current_path(before);
    EXPECT_EQ(meaningOf(start({"folder"})), isHere(On::kPosix)
                                                ? std::errc::permission_denied
                                                : std::errc::no_such_file_or_directory);
    // The folder of this program.
    EXPECT_EQ(start({"scripted-program"}) == 0, isHere(On::kWindows));
    setVariable("PATH", oldPath);
}

TEST_F(ProcessTree, isGoneWhenDropped) {
    ASSERT_EQ(startTree("await enough\n"), 0);
    readTree();
    child.reset();
    EXPECT_FALSE(anyRuns());
}

TEST_F(ProcessTree, isLeftAloneByAProgramThatCameToItsOwnEnd) {
    leaveTreeBehind();
    EXPECT_TRUE(isRunning(tree[1]) && isRunning(tree[2]));
}

}  // namespace
