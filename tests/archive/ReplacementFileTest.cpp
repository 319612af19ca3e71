#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/TemporaryDirectory.h"
#include "tkcore/ReplacementFile.h"

namespace tkcore {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class ReplacementFileTest : public testing::Test {
protected:
    static void replace(const fs::path& path, const std::string& text) {
        ReplacementFile file(path);
        file.write(text.data(), text.size());
        file.commit();
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            found.push_back(entry.path().filename());
        }
        return found;
    }
    /// The failure must name the path and be this error.
    static void expectFailure(const fs::path& path, std::errc error) {
        try {
            replace(path, "new");
            ADD_FAILURE() << path << " was accepted";
        } catch (const std::system_error& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(path.string()));
            EXPECT_EQ(failure.code(), error) << failure.what();
        }
    }
    static unsigned modeOf(const fs::path& path) {
        return static_cast<unsigned>(fs::status(path).permissions());
    }

    TemporaryDirectory folder;
};

TEST_F(ReplacementFileTest, leavesTheOlderFileAndNoTraceWithoutCommit) {
    writeFile(folder / "out", "old");
    const std::string text(3 << 20, 'x');
    ReplacementFile(folder / "out").write(text.data(), text.size());
    EXPECT_EQ(readFile(folder / "out"), "old");
    EXPECT_THAT(names(), ElementsAre("out"));
}

TEST_F(ReplacementFileTest, replacesAnOlderFileAndKeepsItsMode) {
    const std::string longestName(255, 'n');
    const mode_t olderMask = umask(027);
    replace(folder / longestName, "old and longer");
    EXPECT_EQ(modeOf(folder / longestName), 0640U);
    fs::permissions(folder / longestName, fs::perms{0622});
    replace(folder / longestName, "new");
    umask(olderMask);
    EXPECT_EQ(readFile(folder / longestName), "new");
    EXPECT_EQ(modeOf(folder / longestName), 0622U);
    EXPECT_THAT(names(), ElementsAre(longestName));
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
}

TEST_F(ReplacementFileTest, refusesWhatItCannotReplace) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    fs::create_symlink("circle", folder / "circle");
    expectFailure(folder.path(), std::errc::is_a_directory);
    expectFailure(folder / "pipe", std::errc::not_supported);
    expectFailure("/dev/null", std::errc::not_supported);
    expectFailure(folder / "circle", std::errc::too_many_symbolic_link_levels);
    expectFailure(folder / "missing/out", std::errc::no_such_file_or_directory);
    expectFailure(folder / "missing/", std::errc::no_such_file_or_directory);
    expectFailure(folder / std::string(256, 'n'), std::errc::filename_too_long);
    expectFailure("", std::errc::no_such_file_or_directory);
}

}  // namespace
}  // namespace tkcore
