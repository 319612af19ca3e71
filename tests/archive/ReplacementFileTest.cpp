#include "archive/ReplacementFileTest.h"

#include <cerrno>

#include "support/TestSystem.h"

namespace tkcore {
namespace {

using testing::ElementsAre;

TEST_F(ReplacementFileTest, leavesTheOlderFileAndNoTraceWithoutCommit) {
    writeFile(folder / "out", "old");
    const std::string text(3 << 20, 'x');
    ReplacementFile((folder / "out").string()).write(text.data(), text.size());
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

TEST_F(ReplacementFileTest, refusesWhatItCannotReplace) {
    constexpr int kNotHere = -1;
    constexpr int kPathNotFound = 3;
    constexpr int kAccessDenied = 5;
    constexpr int kInvalidName = 123;
    makeFifo(folder / "pipe");
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
        {folder / std::string(256, 'n'), ENAMETOOLONG, kNotHere},
        {"/dev/null", ENOTSUP, kNotHere},
        {"\\\\.\\NUL", kNotHere, kInvalidName},
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
    EXPECT_EQ(names().size(), isHere(On::kPosix) ? 1U : 0U);
}

}  // namespace
}  // namespace tkcore
