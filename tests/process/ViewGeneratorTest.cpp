#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "process/ExtractaViewGenerator.h"
#include "support/Processes.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "support/WriteProgram.h"
#include "tkcore/report/ExtractaParserException.h"

namespace velextracta {
namespace {

using tkcore::AString;
using tkcore::LongFileName;

/// Generators with a scripted program as extracta, which runs in the working directory.
class ViewGenerator : public testing::Test {
protected:
    void TearDown() override {
        generators.clear();
        ExtractaViewGenerator::maxConcurrentExtractas = oldLimit;
        setVariable("VELTAR_EXTRACTA_PATHOVERRIDE", "");
    }

    void useExtracta(const std::string& commands) {
        setVariable("VELTAR_EXTRACTA_PATHOVERRIDE",
                    writeProgram(directory / "the extracta", commands).string());
    }

    ExtractaViewGenerator& start(const AString& name) {
        generators.push_back(std::make_unique<ExtractaViewGenerator>(
            LongFileName(AString(design)), MakeNetListDef({}), workingDir, true, name));
        return *generators.back();
    }

    const TemporaryDirectory directory;
    const std::string design = (directory / "a b.mcm").string();
    const LongFileName workingDir{AString(directory.path().string() + "/")};
    std::vector<std::unique_ptr<ExtractaViewGenerator>> generators;
    const std::uint32_t oldLimit = ExtractaViewGenerator::maxConcurrentExtractas;
};

TEST_F(ViewGenerator, runsExtractaOnItsOwnControlFile) {
    useExtracta("arguments given\n");
    const ActiveView view = start("0_GND+\U0001F50C\xff_VIA CLASS").waitForViewFile();
    const std::string at = directory.path().string();
    const std::string in = (directory / "").string();
    EXPECT_EQ(view.path, AString(at + "/conn0_GND____VIA_CLASS.txt"));
    EXPECT_EQ(view.viewType, ViewType::conn);
    EXPECT_EQ(readFile(directory / "given"), "-k\n-c\n-m\n" + design + "\n" + in +
                                                 "extracta_control_conn0_GND____VIA_CLASS.txt\n" +
                                                 in + "conn0_GND____VIA_CLASS.txt\n" + at + "\n");
    EXPECT_EQ(readFile(directory / "extracta_control_conn0_GND____VIA_CLASS.txt"),
              "CONNECTIVITY\r\n\r\n\tNET_NAME\r\n\r\nEND\r\n\r\n");
}

TEST_F(ViewGenerator, runsHundredsAtOnceAndKeepsHundredsQueuedWithoutDescriptors) {
    // More than fit into a system's list of objects to wait for.
    constexpr std::size_t kAtOnce = isHere(On::kPosix) ? 200 : 70;
    useExtracta("append started .\nawait end\n");
    ExtractaViewGenerator::maxConcurrentExtractas = kAtOnce;
    const std::size_t before = openHandles();
    for (std::size_t n = 0; n < kAtOnce; ++n) {
        start(AString(std::to_string(n)));
    }
    const std::size_t beforeTheQueue = openHandles();
    EXPECT_LE(beforeTheQueue, before + 4 * kAtOnce);
    for (std::size_t n = 0; n < 2 * kAtOnce; ++n) {
        start(AString("q" + std::to_string(n)));
    }
    EXPECT_EQ(openHandles(), beforeTheQueue);
    EXPECT_TRUE(eventually(
        [this] { return readFile(directory / "started") == std::string(kAtOnce, '.'); }));
    generators.resize(kAtOnce + 9);
    writeFile(directory / "end", "");
    for (const auto& generator : generators) {
        generator->waitForViewFile();
    }
    EXPECT_LT(openHandles(), beforeTheQueue);
}

TEST_F(ViewGenerator, startsWhatIsQueuedWhileSomebodyOnlyPolls) {
    useExtracta("sleep 50\nwrite done.$stem .\n");
    ExtractaViewGenerator::maxConcurrentExtractas = 1;
    start("1");
    start("2");
    EXPECT_TRUE(eventually([this] {
        ExtractaViewGenerator::pollProcesses();
        return std::filesystem::exists(directory / "done.extracta_control_conn2");
    }));
}

TEST_F(ViewGenerator, leavesTheQueueWhenDropped) {
    useExtracta("append order $stem,\nsleep 20\n");
    ExtractaViewGenerator::maxConcurrentExtractas = 1;
    start("1");
    start("2");
    start("3");
    generators.erase(generators.begin() + 1);
    generators.back()->waitForViewFile();
    EXPECT_EQ(readFile(directory / "order"), "extracta_control_conn1,extracta_control_conn3,");
}

/// Throws when an extraction is started or queued.
class ThrowingObserver final : public RunObserver {
    void extractionStarted(const AString&, const AString&) override { throw std::bad_alloc(); }
    void extractionQueued(const AString&) override { throw std::bad_alloc(); }
};

TEST_F(ViewGenerator, leavesNoTraceInThePoolWhenItsConstructionFails) {
    useExtracta("append order $stem,\n");
    ExtractaViewGenerator::maxConcurrentExtractas = 1;
    {
        ThrowingObserver observer;
        const auto reporting = ExtractaViewGenerator::reportTo(observer);
        EXPECT_THROW(start("started"), std::bad_alloc);
    }
    start("1");
    {
        ThrowingObserver observer;
        const auto reporting = ExtractaViewGenerator::reportTo(observer);
        EXPECT_THROW(start("queued"), std::bad_alloc);
    }
    start("2").waitForViewFile();
    EXPECT_TRUE(readFile(directory / "order").ends_with("control_conn1,extracta_control_conn2,"));
}

TEST_F(ViewGenerator, namesTheDirectoryWhenTheControlFileCannotBeWritten) {
    const AString missing = workingDir.FilePath() + "missing/";
    const auto start = [&] {
        ExtractaViewGenerator(LongFileName(AString("/a.mcm")), MakeNetListDef({}),
                              LongFileName(missing), true, "");
    };
    EXPECT_THAT(start, testing::ThrowsMessage<tkcore::ExtractaParserException>(
                           "ExtractaViewGenerator failed to write file " + VEL_ANSI(missing)));
}

TEST(ConcurrencyLimit, isHalfTheHardwareThreadsAndAtLeastOne) {
    const std::pair<unsigned, std::uint32_t> cases[] = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {16, 8}};
    for (const auto& [threads, limit] : cases) {
        EXPECT_EQ(concurrentExtractaLimit(threads), limit) << threads;
    }
}

}  // namespace
}  // namespace velextracta
