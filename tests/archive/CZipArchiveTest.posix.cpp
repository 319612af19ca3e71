#include "archive/CZipArchiveTest.h"

#include <fstream>
#include <new>
#include <set>
#include <thread>

#include <pthread.h>

#include "support/FileSizeLimit.h"
#include "support/ProgramRun.h"

namespace velextracta {
namespace {

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

}  // namespace
}  // namespace velextracta
