#include "archive/CZipArchiveTest.h"

#include <algorithm>
#include <ctime>
#include <system_error>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include "support/TestSystem.h"
#include "tkcore/system/Interruption.h"

namespace velextracta {
namespace {

TEST_F(CZipArchiveTest, givesBackTheBytesAndDoesNotDependOnTheThreads) {
    const std::pair<const char*, std::string> contents[] = {
        {"empty", ""},
        {"byte", "S"},
        {"a byte less than a piece", viewText(kPiece - 1)},
        {"piece", viewText(kPiece)},
        {"a byte more than a piece", viewText(kPiece + 1)},
        {"pieces", viewText(9 * kPiece)},
        {"zeros", std::string(3 * kPiece, '\0')},
        {"random", randomBytes(5 * kPiece + 7)},
        {"text, random", viewText(3 * kPiece + 9) + randomBytes(2 * kPiece)},
        {"random, text", randomBytes(2 * kPiece + 9) + viewText(3 * kPiece)}};
    for (const int level : {CZipArchive::kDefaultLevel, 0, 1, 9}) {
        for (const auto& [name, bytes] : contents) {
            writeFile(input, bytes);
            pack({input}, 1, level);
            const auto entries = readArchive(output);
            ASSERT_EQ(entries.size(), 1U);
            EXPECT_TRUE(entries[0].bytes == bytes) << name << ' ' << level;
            EXPECT_LT(fs::file_size(output), bytes.size() + 300) << name << ' ' << level;
            const std::string archive = readFile(output);
            for (const unsigned threads : {0, 2, 5}) {
                pack({input}, threads, level);
                EXPECT_TRUE(readFile(output) == archive) << name << ' ' << level;
            }
        }
    }
}

TEST_F(CZipArchiveTest, storesAFileThatDoesNotShrinkAsAWhole) {
    constexpr unsigned kStored = 0;
    constexpr unsigned kDeflated = 8;
    const std::string random = randomBytes(5 * kPiece);
    const std::pair<std::string, unsigned> cases[] = {{"", kStored},
                                                      {"S!", kStored},
                                                      {std::string(60, 'S'), kDeflated},
                                                      {random.substr(0, 9000), kStored},
                                                      {random, kStored},
                                                      {std::string(20, 'S') + random, kStored},
                                                      {random + viewText(2000), kDeflated},
                                                      {viewText(2000) + random, kDeflated},
                                                      {viewText(kPiece) + random, kDeflated}};
    for (const auto& [bytes, method] : cases) {
        writeFile(input, bytes);
        pack({input});
        EXPECT_EQ(centralField(10, 2), method) << bytes.size();
        EXPECT_TRUE(readArchive(output).at(0).bytes == bytes) << bytes.size();
    }
}

TEST_F(CZipArchiveTest, holdsWhatItHasReadOfAFileThatChangesAndDoubtsItIfThatIsLess) {
    for (const std::string& bytes : {viewText(40 * kPiece), randomBytes(40 * kPiece)}) {
        for (const std::size_t newSize : {std::size_t{0}, 30 * kPiece + 5, 50 * kPiece}) {
            for (const unsigned threads : {1, 3}) {
                writeFile(input, bytes);
                std::uint64_t reported = 0;
                pack({input}, threads, CZipArchive::kDefaultLevel, [&](std::uint64_t size) {
                    reported += size;
                    fs::resize_file(input, newSize);
                });
                const std::string packed = readArchive(output).at(0).bytes;
                EXPECT_EQ(packed.size(), reported);
                EXPECT_TRUE(bytes.starts_with(packed));
                EXPECT_GE(packed.size(), std::min(newSize, bytes.size()));
                const std::string told = input.string() + " has become shorter while it was " +
                                         "packed: of " + std::to_string(bytes.size()) +
                                         " bytes the archive holds " +
                                         std::to_string(packed.size());
                const bool isDoubtful = packed.size() < bytes.size();
                EXPECT_EQ(doubts, std::vector<std::string>(isDoubtful ? 1 : 0, told));
                doubts.clear();
            }
        }
    }
}

TEST_F(CZipArchiveTest, namesEntriesByTheirPathsAndMarksUtf8) {
    constexpr unsigned kUtf8Mark = 0x800;
    const struct {
        std::string name;
        unsigned flags;
        On system = On::kPosix;
    } cases[] = {{"plain", 0, On::kBoth},  {"\xE5\xB1\xA4", kUtf8Mark, On::kBoth},
                 {"latin-1 \xDF", 0},      {"cut \xE5\xB1", 0},
                 {"overlong \xC0\xBF", 0}, {"a\\b", 0}};
    for (const auto& [name, flags, system] : cases) {
        if (isHere(system)) {
            writeFile(folder / name, name);
            pack({folder / name});
            EXPECT_EQ(readArchive(output).at(0).name, entryNameOf(folder / name));
            EXPECT_EQ(centralField(8, 2), flags) << name;
        }
    }
}

TEST_F(CZipArchiveTest, keepsModeAndTimeToTheSecond) {
    const struct {
        unsigned mode;
        unsigned kept;
        On system = On::kBoth;
    } cases[] = {{0444, 0444}, {0751, 0751, On::kPosix}, {0751, 0644, On::kWindows}};
    writeFile(input, "text");
    std::tm local{};
    local.tm_year = 121, local.tm_mon = 2, local.tm_mday = 4;
    local.tm_hour = 5, local.tm_min = 6, local.tm_sec = 9, local.tm_isdst = -1;
    utimbuf times{0, std::mktime(&local)};
    ASSERT_EQ(utime(input.string().c_str(), &times), 0);
    for (const auto& [mode, kept, system] : cases) {
        if (isHere(system)) {
            fs::permissions(input, fs::perms{mode});
            pack({input});
            const ArchiveEntry entry = readArchive(output).at(0);
            EXPECT_EQ(entry.modificationTime, times.modtime);
            EXPECT_EQ(entry.mode, S_IFREG | kept);
        }
    }
    EXPECT_EQ(centralField(12, 2), 5U << 11U | 6U << 5U | 4U);  // two-second steps
    EXPECT_EQ(centralField(14, 2), 41U << 9U | 3U << 5U | 4U);  // years since 1980
}

TEST_F(CZipArchiveTest, mayBeEmpty) {
    pack({});
    EXPECT_EQ(readFile(output), std::string("PK\x05\x06") + std::string(18, '\0'));
}

TEST_F(CZipArchiveTest, isAbandonedByAFileItCannotRead) {
    makeFifo(folder / "pipe");
    writeFile(output, "older");
    const fs::path paths[] = {folder / "missing", folder / "pipe", "/dev/null", folder / "NUL"};
    for (const fs::path& path : paths) {
        CZipArchive zip;
        zip.Open(output.string(), CZipArchive::kCreate);
        try {
            zip.AddNewFile(path.string());
            ADD_FAILURE() << path << " was added";
        } catch (const std::system_error& failure) {
            EXPECT_THAT(failure.what(), testing::HasSubstr(path.relative_path().string()));
        }
        EXPECT_THROW(zip.Close(), std::logic_error);
        zip.Open(output.string(), CZipArchive::kCreate);
        zip.Close(1);  // after an exception
        EXPECT_EQ(readFile(output), "older");
    }
}

TEST_F(CZipArchiveTest, endsAtAnInterruption) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto packInterrupted = [&](int reportsBefore) {
        tkcore::noteInterruptions();
        const auto interrupt = [&](std::uint64_t) {
            if (reportsBefore-- == 0) {
                interruptThisProcess();
                while (tkcore::interruption() == 0) {
                    std::this_thread::yield();
                }
            }
        };
        try {
            interrupt(0);
            pack({input}, 3, CZipArchive::kDefaultLevel, interrupt);
        } catch (const std::runtime_error& failure) {
            const bool isExpected = std::string_view(failure.what()).starts_with("interrupted");
            const bool left = fs::exists(output);
            fs::remove_all(folder.path());
            std::_Exit(isExpected && !left ? 0 : 1);
        }
        std::_Exit(2);
    };
    for (const std::string& bytes : {viewText(9 * kPiece), randomBytes(9 * kPiece)}) {
        writeFile(input, bytes);
        for (const int reportsBefore : {0, 1, 5}) {
            EXPECT_EXIT(packInterrupted(reportsBefore), testing::ExitedWithCode(0), "");
        }
    }
}

}  // namespace
}  // namespace velextracta
