#include "process/ViewGeneratorTest.h"

#include <unistd.h>

#include "support/Processes.h"

namespace velextracta {
namespace {

namespace fs = std::filesystem;

/// The number after a name in a process's file in /proc; 0 if the name is not there.
std::size_t number(const fs::path& process, const char* file, const std::string& name) {
    const std::string text = readFile(process / file);
    const std::size_t at = text.find("\n" + name);
    return at == std::string::npos ? 0 : std::stoul(text.substr(at + name.size() + 1));
}

std::vector<fs::path> childProcesses() {
    std::vector<fs::path> children;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        if (number(entry.path(), "status", "PPid:") == static_cast<std::size_t>(getpid())) {
            children.push_back(entry.path());
        }
    }
    return children;
}

#ifdef __SANITIZE_ADDRESS__  // which needs memory itself
constexpr std::size_t kMost = std::size_t{1} << 30U;
#else
constexpr std::size_t kMost = 1024;  // KiB
#endif

TEST_F(ViewGenerator, takesAKeeperAndLittleMemoryForEachOfHundreds) {
    constexpr std::size_t kAtOnce = 200;
    useExtracta("append started .\nawait end\n");
    ExtractaViewGenerator::maxConcurrentExtractas = kAtOnce;
    const auto memory = [] { return number("/proc/self", "smaps_rollup", "Anonymous:"); };
    const std::size_t before = memory();
    for (std::size_t n = 0; n < kAtOnce; ++n) {
        start(AString(std::to_string(n)));
    }
    ASSERT_TRUE(eventually(
        [this] { return readFile(directory / "started") == std::string(kAtOnce, '.'); }));
    const std::vector<fs::path> keepers = childProcesses();
    EXPECT_EQ(keepers.size(), kAtOnce);
    EXPECT_LE(memory(), before + 4 * kMost);
    for (const fs::path& keeper : keepers) {
        const std::size_t own = number(keeper, "smaps_rollup", "Private_Dirty:");
        EXPECT_GT(own, 0U);
        EXPECT_LE(own, kMost);
    }
    writeFile(directory / "end", "");
    for (const auto& generator : generators) {
        generator->waitForViewFile();
    }
    EXPECT_EQ(childProcesses().size(), 0U);
}

}  // namespace
}  // namespace velextracta
