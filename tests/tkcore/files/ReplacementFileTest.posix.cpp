#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/TemporaryDirectory.h"
#include "tkcore/files/ReplacementFile.h"

namespace {

namespace fs = std::filesystem;

void replace(const fs::path& path) {
    tkcore::ReplacementFile file{tkcore::LongFileName(tkcore::AString(path.string()))};
    file.write("new", 3);
    file.commit();
}

TEST(ReplacementFile, keepsTheModeOfAnOlderFile) {
    const TemporaryDirectory folder;
    const fs::path file = folder / "out";
    const mode_t olderMask = umask(027);
    replace(file);
    umask(olderMask);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms{0640});
    fs::permissions(file, fs::perms{0622});
    replace(file);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms{0622});
}

TEST(ReplacementFile, replacesOnlyWhatItHasLookedAt) {
    const TemporaryDirectory folder;
    writeFile(folder / "out", "old");
    tkcore::ReplacementFile file{tkcore::LongFileName(tkcore::AString((folder / "out").string()))};
    file.write("new", 3);
    writeFile(folder / "design", "a design");
    const auto takePlace = [&] { fs::rename(folder / "design", folder / "out"); };
    EXPECT_THROW(file.commit(takePlace), std::system_error);
    EXPECT_EQ(readFile(folder / "out"), "a design");
}

TEST(ReplacementFile, followsLinksToAFileOrToNone) {
    const TemporaryDirectory folder;
    fs::create_directory(folder / "there");
    writeFile(folder / "there/old", "old");
    fs::create_symlink("there/old", folder / "link");
    fs::create_symlink("link", folder / "linkToLink");
    fs::create_symlink(folder / "there/none", folder / "dangling");
    replace(folder / "linkToLink");
    replace(folder / "dangling");
    EXPECT_EQ(readFile(folder / "there/old"), "new");
    EXPECT_EQ(readFile(folder / "there/none"), "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link") && fs::is_symlink(folder / "dangling"));
}

}  // namespace
