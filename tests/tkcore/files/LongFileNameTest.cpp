#include <filesystem>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "tkcore/files/LongFileName.h"

namespace {

namespace fs = std::filesystem;
using tkcore::AString;
using tkcore::LongFileName;

AString directoryText(const std::string& text) {
    LongFileName name{AString(text)};
    name.MakeItDirectory();
    return name.FilePath();
}

/// "/", or that of the current drive.
const std::string kRoot = fs::current_path().root_path().string();

TEST(LongFileName, isAbsoluteAndOtherwiseAsGiven) {
    const std::string here = (fs::current_path() / "").string();
    EXPECT_EQ(LongFileName(AString("a.mcm")).FilePath(), AString(here + "a.mcm"));
    EXPECT_EQ(LongFileName(AString("../b/./a.mcm")).FilePath(), AString(here + "../b/./a.mcm"));
    EXPECT_EQ(LongFileName(AString(kRoot + "x y/\xff")).FilePath(), AString(kRoot + "x y/\xff"));
    EXPECT_FALSE(LongFileName().IsInitialized());
    EXPECT_TRUE(LongFileName().FilePath().empty());
}

TEST(LongFileName, endsInOneSeparatorAsADirectory) {
    EXPECT_EQ(directoryText(kRoot + "designs"), AString(kRoot + "designs/"));
    EXPECT_EQ(directoryText(kRoot + "designs/"), AString(kRoot + "designs/"));
    EXPECT_EQ(directoryText(kRoot), AString(kRoot));
    EXPECT_EQ(directoryText("").wide().size(), fs::current_path().native().size() + 1);
}

/// Or a file, where the library makes no links.
void makeLink(const fs::path& target, const fs::path& link) {
    std::error_code error;
    fs::create_symlink(target, link, error);
    EXPECT_EQ(!error, isHere(On::kPosix));
    if (error) {
        writeFile(link, "");
    }
}

TEST(LongFileName, createsADirectoryOnlyWhereNothingIs) {
    const TemporaryDirectory directory;
    writeFile(directory / "file", "");
    fs::create_directory(directory / "folder");
    makeLink("folder", directory / "link");
    makeLink("nowhere", directory / "dangling");
    for (const char* name : {"file", "folder", "link", "dangling", "missing/new"}) {
        EXPECT_FALSE(LFN_CreateDirectory(LongFileName((directory / name).string() + "/"))) << name;
    }
    const LongFileName created((directory / "new").string() + "/");
    EXPECT_TRUE(LFN_CreateDirectory(created));
    EXPECT_TRUE(LFN_IsExistingDirectory(created));
    EXPECT_FALSE(LFN_IsExistingDirectory(LongFileName((directory / "file").string())));
}

TEST(LongFileName, isDeletedWithAllItHoldsButNotWhatLinksInItPointTo) {
    const TemporaryDirectory directory;
    fs::create_directories(directory / "run/deep");
    writeFile(directory / "run/deep/file", "x");
    writeFile(directory / "kept", "x");
    makeLink(directory / "kept", directory / "run/link");
    EXPECT_TRUE(LFN_Delete(LongFileName((directory / "run").string() + "/")));
    EXPECT_FALSE(fs::exists(directory / "run"));
    EXPECT_TRUE(fs::exists(directory / "kept"));
    EXPECT_FALSE(LFN_Delete(LongFileName()));
}

}  // namespace
