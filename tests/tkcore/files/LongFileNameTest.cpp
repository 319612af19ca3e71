#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "tkcore/files/InputFile.h"
#include "tkcore/files/LongFileName.h"
#include "tkcore/files/OutputFile.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/files/ReplacementFile.h"

namespace {

namespace fs = std::filesystem;
using tkcore::AString;
using tkcore::LongFileName;

AString directoryText(const std::string& text) {
    LongFileName name{AString(text)};
    name.MakeItDirectory();
    return name.FilePath();
}

/// "/", or the root of the current drive.
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

/// How many of the functions that find or write a file refuse the path.
int refusals(const LongFileName& path) {
    using tkcore::OutputFile;
    const std::function<void()> uses[] = {
        [&] { OutputFile(path, OutputFile::IfThere::kReplace); },
        [&] { const tkcore::InputFile file(path); },
        [&] { const tkcore::ReplacementFile file(path); },
    };
    const auto fails = [](const auto& use) {
        try {
            use();
        } catch (const std::system_error&) {
            return true;
        }
        return false;
    };
    const auto count = static_cast<int>(std::ranges::count_if(uses, fails));
    const bool isSeen = tkcore::isThere(path);
    return count + (isSeen || LFN_Delete(path) ? 0 : 1) + (LFN_CreateDirectory(path) ? 0 : 1);
}

TEST(LongFileName, isUsedForNoOtherFileThanItNames) {
    const TemporaryDirectory directory;
    writeFile(directory / "it", "mine");
    const fs::path before = fs::current_path();
    fs::current_path(directory.path());
    const std::string here = directory.path().string();
    const std::string drive = directory.path().root_name().string();
    for (const char* name : {"it.", "it ", "it:", "it::$DATA", "x.\\..\\it", "nul\\..\\it", "NUL",
                             "com1.log", "CONIN$", "LPT\u00b9.x", "it?"}) {
        // The last two depend on the current drive and its current directory.
        for (const std::string& text : {here + "/" + name, std::string(name),
                                        here.substr(drive.size()) + "/" + name, drive + name}) {
            EXPECT_EQ(refusals(tkcore::userPath(text)), isHere(On::kWindows) ? 5 : 1) << text;
        }
    }
    EXPECT_EQ(readFile(directory / "it"), "mine");
    fs::current_path(before);
}

/// Makes a link, or a file where the library makes no links.
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
