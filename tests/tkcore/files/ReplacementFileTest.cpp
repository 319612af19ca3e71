#include <cerrno>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "tkcore/files/ReplacementFile.h"

namespace tkcore {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class ReplacementFileTest : public testing::Test {
protected:
    static LongFileName named(const fs::path& path) {
        return path.empty() ? LongFileName() : LongFileName(AString(path.string()));
    }
    static void replace(const fs::path& path, const std::string& text) {
        ReplacementFile file(named(path));
        file.write(text.data(), text.size());
        file.commit();
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            found.push_back(entry.path().filename().string());
        }
        return found;
    }
    /// The failure must name the path and have this code of the system.
    static void expectFailure(const fs::path& path, int error) {
        try {
            replace(path, "new");
            ADD_FAILURE() << path << " was accepted";
        } catch (const std::system_error& failure) {
            EXPECT_THAT(failure.what(), testing::HasSubstr(path.string()));
            EXPECT_EQ(failure.code().value(), error) << failure.what();
        }
    }

    TemporaryDirectory folder;
};

TEST_F(ReplacementFileTest, leavesTheOlderFileAndNoTraceWithoutCommit) {
    writeFile(folder / "out", "old");
    const std::string text(3 << 20, 'x');
    ReplacementFile(named(folder / "out")).write(text.data(), text.size());
    EXPECT_EQ(readFile(folder / "out"), "old");
    EXPECT_THAT(names(), ElementsAre("out"));
}

TEST_F(ReplacementFileTest, replacesAnOlderFile) {
    const std::string longestName(255, 'n');
    replace(folder / longestName, "old and longer");
    replace(folder / longestName, "new");
    EXPECT_EQ(readFile(folder / longestName), "new");
    EXPECT_THAT(names(), ElementsAre(longestName));
}

TEST_F(ReplacementFileTest, replacesNothingThatCameToBeWhereNothingWas) {
    ReplacementFile file(named(folder / "out"));
    file.write("new", 3);
    writeFile(folder / "out", "a design");
    EXPECT_THROW(file.commit(), std::system_error);
    EXPECT_EQ(readFile(folder / "out"), "a design");
}

TEST_F(ReplacementFileTest, leavesAllAsItWasIfTheLastLookFindsAReason) {
    writeFile(folder / "out", "old");
    for (const char* name : {"out", "other"}) {
        ReplacementFile file(named(folder / name));
        file.write("new", 3);
        EXPECT_THROW(file.commit([] { throw std::runtime_error("a reason"); }), std::runtime_error);
    }
    EXPECT_EQ(readFile(folder / "out"), "old");
    EXPECT_THAT(names(), ElementsAre("out"));
}

TEST_F(ReplacementFileTest, refusesWhatItCannotReplace) {
    constexpr int kNotHere = -1;
    constexpr int kPathNotFound = 3;
    constexpr int kAccessDenied = 5;
    constexpr int kInvalidName = 123;
    makeFifo(folder / "pipe");
    std::error_code noLinks;
    fs::create_symlink("circle", folder / "circle", noLinks);
    const struct {
        fs::path path;
        int posixError;
        int windowsError;
    } cases[] = {
        {folder.path(), EISDIR, kAccessDenied},
        {folder / "missing/out", ENOENT, kPathNotFound},
        {folder / "missing/", ENOENT, kInvalidName},
        {"", ENOENT, kInvalidName},
        {folder / "pipe", ENOTSUP, kNotHere},
        {folder / "circle", ELOOP, kNotHere},
        {folder / std::string(256, 'n'), ENAMETOOLONG, kNotHere},
        {"/dev/null", ENOTSUP, kNotHere},
        {R"(\\.\NUL)", kNotHere, kInvalidName},
        {"NUL", kNotHere, kInvalidName},
        {folder / "Aux.zip", kNotHere, kInvalidName},
        {folder / "lpt1/out", kNotHere, kInvalidName},
        {folder / "out.", kNotHere, kInvalidName},
        {folder / "out:part", kNotHere, kInvalidName},
    };
    for (const auto& [path, posixError, windowsError] : cases) {
        if (const int error = isHere(On::kPosix) ? posixError : windowsError; error != kNotHere) {
            expectFailure(path, error);
        }
    }
    EXPECT_EQ(names().size(), isHere(On::kPosix) ? 2U : 0U);
}

}  // namespace
}  // namespace tkcore
