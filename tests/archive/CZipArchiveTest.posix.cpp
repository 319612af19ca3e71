#include "archive/CZipArchiveTest.h"

#include <fstream>
#include <new>
#include <set>
#include <thread>

#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velextracta {
namespace {

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

}  // namespace
}  // namespace velextracta
