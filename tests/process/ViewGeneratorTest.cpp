#include <csignal>
#include <cstdlib>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "process/ExtractaViewGenerator.h"
#include "support/Processes.h"
#include "support/TemporaryDirectory.h"
#include "tkcore/ExtractaParserException.h"

using namespace velextracta;
using tkcore::AString;
using tkcore::LongFileName;

namespace {

/// Generators with a shell script for extracta. It runs in the working directory, has its
/// arguments in "$@" and the name of its own control file in $control.
class ViewGenerator : public testing::Test {
protected:
    void TearDown() override {
        generators.clear();
        ExtractaViewGenerator::maxConcurrentExtractas = oldLimit;
        unsetenv("VELTAR_EXTRACTA_PATHOVERRIDE");
    }

    void useExtracta(const std::string& body) {
        const auto path =
            writeScript(directory / "the extracta", "control=$(basename \"$5\" .txt)\n" + body);
        setenv("VELTAR_EXTRACTA_PATHOVERRIDE", path.c_str(), 1);
    }

    ExtractaViewGenerator& start(const AString& name) {
        generators.push_back(std::make_unique<ExtractaViewGenerator>(
            LongFileName(AString("/designs/a b.mcm")), MakeNetListDef({}), workingDir, true, name));
        return *generators.back();
    }

    std::string failureOf(const std::function<void()>& operation) {
        try {
            operation();
        } catch (const tkcore::ExtractaParserException& exception) {
            return exception.what();
        }
        return "no failure";
    }

    std::string words(const std::string& file) {
        std::istringstream stream(readFile(directory / file));
        std::string text;
        for (std::string word; stream >> word;) {
            text += (text.empty() ? "" : " ") + word;
        }
        return text;
    }

    const TemporaryDirectory directory;
    const LongFileName workingDir{AString(directory.path().string() + "/")};
    std::vector<std::unique_ptr<ExtractaViewGenerator>> generators;
    const std::uint32_t oldLimit = ExtractaViewGenerator::maxConcurrentExtractas;
};

TEST_F(ViewGenerator, runsExtractaOnItsOwnControlFile) {
    useExtracta("printf '%s\\n' \"$@\" > arguments\n");
    const ActiveView view = start("0_GND +é_VIA CLASS").waitForViewFile();
    const std::string at = directory.path().string();
    EXPECT_EQ(view.path, AString(at + "/conn0_GND____VIA_CLASS.txt"));
    EXPECT_EQ(view.viewType, ViewType::conn);
    EXPECT_EQ(readFile(directory / "arguments"),
              "-k\n-c\n-m\n/designs/a b.mcm\n" + at +
                  "/extracta_control_conn0_GND____VIA_CLASS.txt\n" + at +
                  "/conn0_GND____VIA_CLASS.txt\n");
    EXPECT_EQ(readFile(directory / "extracta_control_conn0_GND____VIA_CLASS.txt"),
              "CONNECTIVITY\r\n\r\n\tNET_NAME\r\n\r\nEND\r\n\r\n");
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(ViewGenerator, keepsHundredsQueuedWithoutDescriptors) {
    useExtracta("exit 0\n");
    ExtractaViewGenerator::maxConcurrentExtractas = 2;
    start("0");
    start("1");
    const std::ptrdiff_t beforeTheQueue = openDescriptors();
    for (int n = 2; n < 600; ++n) {
        start(AString(std::to_string(n)));
    }
    EXPECT_EQ(openDescriptors(), beforeTheQueue);
    for (const auto& generator : generators) {
        generator->waitForViewFile();
    }
    EXPECT_LT(openDescriptors(), beforeTheQueue);
}

TEST_F(ViewGenerator, startsWhatIsQueuedWhileSomebodyOnlyPolls) {
    useExtracta("sleep 0.05; echo > done.$control\n");
    ExtractaViewGenerator::maxConcurrentExtractas = 1;
    start("1");
    start("2");
    EXPECT_TRUE(eventually([this] {
        ExtractaViewGenerator::pollProcesses();
        return std::filesystem::exists(directory / "done.extracta_control_conn2");
    }));
}

TEST_F(ViewGenerator, noticesAnEndWhoseSignalIsLost) {
    useExtracta("sleep 0.05\n");
    start("1");
    for (const int signal : {SIGCHLD, SIGIO}) {
        std::signal(signal, SIG_DFL);
    }
    generators.front()->waitForViewFile();
}

TEST_F(ViewGenerator, endsItsProcessWhenDropped) {
    useExtracta("sleep 1000 & echo $! > child; echo $$ > parent; wait\n");
    start("dropped");
    const pid_t child = readProcessId(directory / "child");
    const pid_t parent = readProcessId(directory / "parent");
    generators.clear();
    EXPECT_FALSE(isRunning(child));
    EXPECT_FALSE(isRunning(parent));
}

TEST_F(ViewGenerator, leavesTheQueueWhenDropped) {
    useExtracta("echo $control >> order; sleep 0.02\n");
    ExtractaViewGenerator::maxConcurrentExtractas = 1;
    start("1");
    start("2");
    start("3");
    generators.erase(generators.begin() + 1);
    generators.back()->waitForViewFile();
    EXPECT_EQ(words("order"), "extracta_control_conn1 extracta_control_conn3");
}

TEST_F(ViewGenerator, namesTheDirectoryWhenTheControlFileCannotBeWritten) {
    const AString missing = workingDir.FilePath() + "missing/";
    EXPECT_EQ(failureOf([&] {
                  ExtractaViewGenerator(LongFileName(AString("/a.mcm")), MakeNetListDef({}),
                                        LongFileName(missing), true, "");
              }),
              "ExtractaViewGenerator failed to write file " + VEL_ANSI(missing));
}

TEST_F(ViewGenerator, runsSeveralViewsOutsideThePool) {
    useExtracta("printf '%s ' \"$@\" > arguments; printf no; exit 4\n");
    ExtractaViewGenerator::maxConcurrentExtractas = 0;
    const auto run = [this] {
        ExtractaViewGenerator::runExtracta(
            LongFileName(AString("/a.mcm")), LongFileName(AString("/c.txt")), false,
            {{ViewType::layer, "/layer.txt"}, {ViewType::net, "/net.txt"}}, workingDir);
    };
    EXPECT_EQ(failureOf(run),
              (directory / "the extracta").string() + " exited with non-zero exit code 4: no");
    EXPECT_EQ(readFile(directory / "arguments"), "-k -m /a.mcm /c.txt /layer.txt /net.txt ");
}

TEST(ConcurrencyLimit, isHalfTheHardwareThreadsAndAtLeastOne) {
    const std::pair<unsigned, std::uint32_t> cases[] = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {16, 8}};
    for (const auto& [threads, limit] : cases) {
        EXPECT_EQ(concurrentExtractaLimit(threads), limit) << threads;
    }
}

}  // namespace
