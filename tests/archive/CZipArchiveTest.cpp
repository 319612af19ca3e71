#include <csignal>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include "archive/CZipArchive.h"
#include "support/Archive.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryDirectory.h"
#include "tkcore/Interruption.h"

namespace velextracta {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

std::string viewText(std::size_t size) {
    std::mt19937 random(size);
    std::string text;
    while (text.size() < size) {
        text += "S!CONDUCTOR!TOP!NET" + std::to_string(random() % 5000) + "!" +
                std::to_string(random()) + "!\n";
    }
    text.resize(size);
    return text;
}

std::string randomBytes(std::size_t size) {
    std::mt19937 random(size);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

class CZipArchiveTest : public testing::Test {
protected:
    void pack(const std::vector<fs::path>& paths,
              std::size_t memoryBound = CZipArchive::kMemoryBound,
              int level = CZipArchive::kDefaultLevel) {
        CZipArchive zip(memoryBound);
        zip.Open(output, CZipArchive::kCreate, 0);
        for (const fs::path& path : paths) {
            zip.AddNewFile(path, level, true, CZipArchive::kSafeSmartness, 65536);
        }
        zip.Close(CZipArchive::kNormalClose, false);
    }
    /// A little-endian field of the central header of an archive's only entry.
    unsigned centralField(std::size_t offset, int bytes) const {
        const std::string zip = readFile(output);
        const std::size_t header = zip.find("PK\x01\x02");
        unsigned value = 0;
        while (bytes-- > 0) {
            value = value << 8U | static_cast<unsigned char>(zip.at(header + offset + bytes));
        }
        return value;
    }

    TemporaryDirectory folder;
    const fs::path output = folder / "out.vlx";
    const fs::path input = folder / "view.txt";
};

TEST_F(CZipArchiveTest, ItGivesBackTheBytesOfWholeAndOfStreamedFiles) {
    const std::pair<const char*, std::string> contents[] = {
        {"empty", ""},
        {"byte", "S"},
        {"text", viewText(600000)},
        {"whole buffers", viewText(2 << 20)},
        {"zeros", std::string(600000, '\0')},
        {"random", randomBytes(200000)},
        {"text, random, text", viewText(99999) + randomBytes(99999) + viewText(99999)}};
    for (const std::size_t memoryBound : {0, 300000, 1 << 30}) {
        for (const int level : {CZipArchive::kDefaultLevel, 0, 1, 9}) {
            for (const auto& [name, bytes] : contents) {
                writeFile(input, bytes);
                pack({input}, memoryBound, level);
                const auto entries = readArchive(output);
                ASSERT_EQ(entries.size(), 1U);
                EXPECT_TRUE(entries[0].bytes == bytes) << name << ' ' << level;
                EXPECT_LT(fs::file_size(output), bytes.size() * 1.02 + 300) << name << ' ' << level;
            }
        }
    }
}

TEST_F(CZipArchiveTest, ItStoresAWholeFileThatDoesNotShrinkButStreamsALargerOneDeflated) {
    constexpr unsigned kStored = 0;
    constexpr unsigned kDeflated = 8;
    writeFile(input, randomBytes(200000));
    const std::pair<std::size_t, unsigned> cases[] = {
        {400000, kStored}, {399999, kDeflated}, {300000, kDeflated}, {1000, kDeflated}};
    for (const auto& [memoryBound, method] : cases) {
        pack({input}, memoryBound);
        EXPECT_EQ(centralField(10, 2), method) << memoryBound;
        EXPECT_EQ(readArchive(output).at(0).bytes, readFile(input)) << memoryBound;
    }
}

TEST_F(CZipArchiveTest, ItNamesEntriesByTheirPathsAndMarksUtf8) {
    constexpr unsigned kUtf8Mark = 0x800;
    const std::pair<std::string, unsigned> cases[] = {
        {"plain", 0},        {"\xE5\xB1\xA4", kUtf8Mark}, {"latin-1 \xDF", 0},
        {"cut \xE5\xB1", 0}, {"overlong \xC0\xBF", 0},    {"a\\b", 0}};
    for (const auto& [name, flags] : cases) {
        writeFile(folder / name, name);
        pack({folder / name});
        EXPECT_EQ("/" + readArchive(output).at(0).name, (folder / name).string());
        EXPECT_EQ(centralField(8, 2), flags) << name;
    }
}

TEST_F(CZipArchiveTest, ItKeepsModeAndTimeToTheSecond) {
    writeFile(input, "text");
    fs::permissions(input, fs::perms{0751});
    std::tm local{};
    local.tm_year = 121, local.tm_mon = 2, local.tm_mday = 4;
    local.tm_hour = 5, local.tm_min = 6, local.tm_sec = 9, local.tm_isdst = -1;
    const utimbuf times{0, std::mktime(&local)};
    ASSERT_EQ(utime(input.c_str(), &times), 0);
    pack({input});
    const auto entries = readArchive(output);
    EXPECT_EQ(entries.at(0).modificationTime, times.modtime);
    EXPECT_EQ(entries.at(0).mode, S_IFREG | 0751U);
    EXPECT_EQ(centralField(12, 2), 5U << 11U | 6U << 5U | 4U);  // two-second steps
    EXPECT_EQ(centralField(14, 2), 41U << 9U | 3U << 5U | 4U);  // years since 1980
}

TEST_F(CZipArchiveTest, ItKeepsTheOrderOfAddingAndOfADirectoryOnlyItsEntry) {
    fs::create_directory(folder / "sub");
    writeFile(folder / "sub/inside", "x");
    writeFile(input, "text");
    pack({input, folder / "sub"});
    const auto entries = readArchive(output);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ("/" + entries[1].name, (folder / "sub/").string());
    EXPECT_TRUE(S_ISDIR(entries[1].mode));
}

TEST_F(CZipArchiveTest, ItMayBeEmpty) {
    pack({});
    EXPECT_EQ(readFile(output), std::string("PK\x05\x06") + std::string(18, '\0'));
}

TEST_F(CZipArchiveTest, ItIsAbandonedByAFileItCannotRead) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    writeFile(output, "older");
    for (const fs::path& path : {folder / "missing", folder / "pipe", fs::path("/dev/null")}) {
        CZipArchive zip;
        zip.Open(output, CZipArchive::kCreate);
        try {
            zip.AddNewFile(path);
            ADD_FAILURE() << path << " was added";
        } catch (const std::system_error& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(path.string()));
        }
        EXPECT_THROW(zip.Close(), std::logic_error);
        zip.Open(output, CZipArchive::kCreate);
        zip.Close(1);  // after an exception
        EXPECT_EQ(readFile(output), "older");
    }
}

TEST_F(CZipArchiveTest, ItFailsOnAFullDiskAndKeepsTheOlderFile) {
    writeFile(output, "older");
    writeFile(input, randomBytes(4000000));
    writeFile(folder / "small", "x");
    pack({folder / "small"});
    const auto smallSize = fs::file_size(output);
    const std::string older = readFile(output);
    const std::pair<fs::path, rlim_t> cases[] = {{input, 0},        // at the first bytes
                                                 {input, 2000000},  // amidst the data
                                                 {input, 4000100},  // in the directory
                                                 {folder / "small", smallSize - 1}};
    for (const auto& [path, room] : cases) {
        bool failed = false;
        try {
            const FileSizeLimit limit(room);
            pack({path});
        } catch (const std::system_error& failure) {
            failed = failure.code() == std::errc::file_too_large;
        }
        EXPECT_TRUE(failed) << room;
        EXPECT_TRUE(readFile(output) == older) << room;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 3) << room;
    }
}

TEST_F(CZipArchiveTest, ItEndsAtAnInterruption) {
    writeFile(input, "x");
    const auto packInterrupted = [&] {
        tkcore::noteInterruptions();
        std::raise(SIGTERM);
        try {
            pack({input});
        } catch (const std::runtime_error& failure) {
            _exit(std::string(failure.what()) == "interrupted" ? 0 : 1);
        }
        _exit(2);
    };
    EXPECT_EXIT(packInterrupted(), testing::ExitedWithCode(0), "");
    EXPECT_FALSE(fs::exists(output));
}

}  // namespace
}  // namespace velextracta
