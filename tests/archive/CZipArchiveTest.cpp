#include <csignal>
#include <fstream>
#include <functional>
#include <new>
#include <set>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <utime.h>

#include "archive/CZipArchive.h"
#include "archive/Piece.h"
#include "support/Archive.h"
#include "support/Contents.h"
#include "support/FileSizeLimit.h"
#include "support/ProgramRun.h"
#include "support/TemporaryDirectory.h"
#include "tkcore/Interruption.h"

namespace velextracta {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr std::size_t kPiece = Piece::kMostBytes;

class CZipArchiveTest : public testing::Test {
protected:
    void pack(const std::vector<fs::path>& paths, unsigned threads = 3,
              int level = CZipArchive::kDefaultLevel,
              const std::function<void(std::uint64_t)>& listener = {}) {
        CZipArchive zip(threads);
        zip.reportProgressTo(listener);
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

TEST_F(CZipArchiveTest, isReadByOtherPrograms) {
    const std::string shapes[] = {"", "S", viewText(kPiece + 1), randomBytes(3 * kPiece),
                                  viewText(3 * kPiece) + randomBytes(kPiece)};
    std::vector<fs::path> paths;
    for (const std::string& bytes : shapes) {
        paths.push_back(folder / std::to_string(bytes.size()));
        writeFile(paths.back(), bytes);
    }
    pack(paths);
    for (const char* command : {"unzip -tq", "7z t -bso0", "python3 -m zipfile -t", "bsdtar -xf"}) {
        const Outcome outcome =
            runProgram({{"/bin/sh", "-c", std::string(command) + " " + output.string()},
                        {},
                        folder.path(),
                        {}});
        EXPECT_EQ(outcome.exitCode, 0) << command << ": " << outcome.errors;
    }
    for (const fs::path& path : paths) {
        EXPECT_TRUE(readFile(folder.path() / path.relative_path()) == readFile(path)) << path;
    }
}

TEST_F(CZipArchiveTest, holdsWhatItHasReadOfAFileThatChanges) {
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
            }
        }
    }
}

TEST_F(CZipArchiveTest, isAbandonedWhenTheListenerFails) {
    writeFile(output, "older");
    for (const std::string& bytes : {viewText(9 * kPiece), randomBytes(9 * kPiece)}) {
        writeFile(input, bytes);
        const auto fail = [](std::uint64_t) { throw std::range_error("listener"); };
        EXPECT_THROW(pack({input}, 3, CZipArchive::kDefaultLevel, fail), std::range_error);
        EXPECT_EQ(readFile(output), "older");
    }
}

TEST_F(CZipArchiveTest, packsOrFailsHoweverLittleMemoryThereIs) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer needs memory without end itself";
#endif
    writeFile(input, viewText(9 * kPiece));
    pack({input});
    const std::string archive = readFile(output);
    const auto packWithin = [&](rlim_t room) {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        rlimit limit{pages * static_cast<std::size_t>(getpagesize()), RLIM_INFINITY};
        setrlimit(RLIMIT_AS, &limit);
        // What earlier tests have given back must not help.
        for (const std::size_t size : {1 << 20, 1 << 12}) {
            while (::operator new(size, std::nothrow) != nullptr) {
            }
        }
        limit.rlim_cur += room;
        setrlimit(RLIMIT_AS, &limit);
        try {
            pack({input});
        } catch (const std::exception&) {
            _exit(1);
        }
        _exit(0);
    };
    std::set<bool> outcomes;
    for (rlim_t room = 0; room < (48 << 20U); room += 1'200'000) {
        writeFile(output, "older");
        EXPECT_EXIT(
            packWithin(room),
            [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) <= 1; }, "");
        const std::string found = readFile(output);
        outcomes.insert(found == archive);
        EXPECT_TRUE(found == archive || found == "older") << room;
    }
    EXPECT_EQ(outcomes.size(), 2U);
}

TEST_F(CZipArchiveTest, packsAloneWhereNoThreadCanBeStarted) {
    writeFile(input, viewText(9 * kPiece));
    pack({input});
    const std::string archive = readFile(output);
    const auto packAlone = [&] {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 50U);
        pthread_setattr_default_np(&attributes);
        try {
            std::thread([] {}).join();
            _exit(2);
        } catch (const std::system_error&) {
            pack({input});
        }
        _exit(readFile(output) == archive ? 0 : 1);
    };
    EXPECT_EXIT(packAlone(), testing::ExitedWithCode(0), "");
}

TEST_F(CZipArchiveTest, namesEntriesByTheirPathsAndMarksUtf8) {
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

TEST_F(CZipArchiveTest, keepsModeAndTimeToTheSecond) {
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

TEST_F(CZipArchiveTest, keepsTheOrderOfAddingAndOfADirectoryOnlyItsEntry) {
    fs::create_directory(folder / "sub");
    writeFile(folder / "sub/inside", "x");
    writeFile(input, "text");
    pack({input, folder / "sub"});
    const auto entries = readArchive(output);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ("/" + entries[1].name, (folder / "sub/").string());
    EXPECT_TRUE(S_ISDIR(entries[1].mode));
}

TEST_F(CZipArchiveTest, mayBeEmpty) {
    pack({});
    EXPECT_EQ(readFile(output), std::string("PK\x05\x06") + std::string(18, '\0'));
}

TEST_F(CZipArchiveTest, isAbandonedByAFileItCannotRead) {
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

TEST_F(CZipArchiveTest, failsOnAFullDiskAndKeepsTheOlderFile) {
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

TEST_F(CZipArchiveTest, endsAtAnInterruption) {
    const auto packInterrupted = [&](int reportsBefore) {
        tkcore::noteInterruptions();
        const auto interrupt = [&](std::uint64_t) {
            if (reportsBefore-- == 0) {
                std::raise(SIGTERM);
            }
        };
        try {
            interrupt(0);
            pack({input}, 3, CZipArchive::kDefaultLevel, interrupt);
        } catch (const std::runtime_error& failure) {
            _exit(std::string_view(failure.what()).starts_with("interrupted") ? 0 : 1);
        }
        _exit(2);
    };
    for (const std::string& bytes : {viewText(9 * kPiece), randomBytes(9 * kPiece)}) {
        writeFile(input, bytes);
        for (const int reportsBefore : {0, 1, 5}) {
            EXPECT_EXIT(packInterrupted(reportsBefore), testing::ExitedWithCode(0), "");
            EXPECT_FALSE(fs::exists(output));
        }
    }
}

}  // namespace
}  // namespace velextracta
