#include "archive/ReplacementFileTest.h"

#include <cerrno>

#include <sys/stat.h>

namespace tkcore {
namespace {

TEST_F(ReplacementFileTest, keepsTheModeOfAnOlderFileAndMakesANewOneAsTheUserWants) {
    const mode_t olderMask = umask(027);
    replace(folder / "out", "old");
    umask(olderMask);
    EXPECT_EQ(fs::status(folder / "out").permissions(), fs::perms{0640});
    fs::permissions(folder / "out", fs::perms{0622});
    replace(folder / "out", "new");
    EXPECT_EQ(fs::status(folder / "out").permissions(), fs::perms{0622});
}

TEST_F(ReplacementFileTest, followsLinksToAFileOrToNone) {
    fs::create_directory(folder / "there");
    writeFile(folder / "there/old", "old");
    fs::create_symlink("there/old", folder / "link");
    fs::create_symlink("link", folder / "linkToLink");
    fs::create_symlink(folder / "there/none", folder / "dangling");
    replace(folder / "linkToLink", "new");
    replace(folder / "dangling", "created");
    EXPECT_EQ(readFile(folder / "there/old"), "new");
    EXPECT_EQ(readFile(folder / "there/none"), "created");
    EXPECT_TRUE(fs::is_symlink(folder / "link") && fs::is_symlink(folder / "dangling"));

    fs::create_symlink("circle", folder / "circle");
    expectFailure(folder / "circle", ELOOP);
}

}  // namespace
}  // namespace tkcore
