#include "tkcore/programs/ProcessTest.h"

#include <chrono>
#include <list>

#include <windows.h>

#include "tkcore/programs/inside/StartedProcess.windows.h"

namespace {

using tkcore::AString;
using tkcore::ChildProgram;
using tkcore::LongFileName;

TEST_F(Process, hasNoOtherHandle) {
    constexpr DWORD kNobodyWrites = ERROR_BROKEN_PIPE;
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_TRUE(CreatePipe(&reader, &writer, &inheritable, 0));
    ASSERT_EQ(startProgram("write ready .\nawait end\n"), 0);
    ASSERT_TRUE(eventually([this] { return exists(directory / "ready"); }));
    CloseHandle(writer);
    EXPECT_FALSE(PeekNamedPipe(reader, nullptr, 0, nullptr, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), kNobodyWrites);
    CloseHandle(reader);
    writeFile(directory / "end", "");
    EXPECT_EQ(waitForEnd(), 0);
}

class BatchFile : public ProcessTree {
protected:
    AString write(const std::string& line) const {
        writeFile(directory / "batch.cmd", "@echo off\r\n" + line + "\r\n");
        return (directory / "batch.cmd").string();
    }
};

TEST_F(BatchFile, isGoneWithAllItHasStartedWhenDropped) {
    writeTree("await enough\n");
    ASSERT_EQ(start({write("\"%~dp0program.exe\"")}), 0);
    readTree();
    child.reset();
    EXPECT_FALSE(anyRuns());
}

TEST_F(BatchFile, isGivenNoWordThatItsInterpreterWouldReplace) {
    constexpr int kInvalidName = ERROR_INVALID_NAME;
    const AString batch = write("echo ran > \"%~dp0ran\"");
    setVariable("EVIL", "x & echo evil > evil &");
    EXPECT_EQ(start({batch, "\"C:/%EVIL%/design.mcm\""}), kInvalidName);
    EXPECT_EQ(start({batch, "\"C:/a & b ^ (c) ! d/design.mcm\""}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_TRUE(exists(directory / "ran"));
    // A program gets the words unchanged.
    writeProgram(directory / "program", "arguments given");
    EXPECT_EQ(start({AString((directory / "program.exe").string()), "%EVIL%"}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(readFile(directory / "given").substr(0, 7), "%EVIL%\n");
}

/// Programs that a console asks to end. The test replaces the console: for each event it makes a
/// file named after the group of programs.
class AskedProgram : public Process {
protected:
    void SetUp() override {
        folder = directory.path();
        asked.clear();
        tkcore::sendConsoleEvent = [](DWORD event, DWORD group) -> BOOL {
            asked.push_back(std::to_string(group));
            EXPECT_EQ(event, static_cast<DWORD>(CTRL_BREAK_EVENT));
            writeFile(folder / ("asked." + asked.back()), "");
            return TRUE;
        };
    }
    void TearDown() override { tkcore::sendConsoleEvent = &GenerateConsoleCtrlEvent; }

    inline static std::filesystem::path folder;
    inline static std::vector<std::string> asked;
};

TEST_F(AskedProgram, hasASecondToEndByItself) {
    for (const char* then : {"write bye .\n", "await never\n"}) {
        ASSERT_EQ(startProgram(std::string("write id $pid\\n\nawait asked.$pid\n") + then), 0);
        const std::string number = std::to_string(readProcessId(directory / "id"));
        const auto before = std::chrono::steady_clock::now();
        child.reset();
        const bool isPolite = exists(directory / "bye");
        EXPECT_EQ(asked.back(), number);
        EXPECT_EQ(isPolite, std::string(then) == "write bye .\n");
        EXPECT_TRUE(isPolite ||
                    std::chrono::steady_clock::now() - before >= std::chrono::seconds(1));
        EXPECT_FALSE(isRunning(std::stoi(number)));
        std::filesystem::remove(directory / "bye");
        std::filesystem::remove(directory / "id");
    }
    EXPECT_EQ(asked.size(), 2U);
}

TEST_F(AskedProgram, isAskedAtTheSameTimeAsOthers) {
    // Each waits until all are asked. If they were asked one by one, it would be killed before.
    const AString meets =
        writeProgram(directory / "meets", "append ready .\nawait-count asked. 3\nappend met .\n")
            .string();
    std::list<ChildProgram> programs;
    for (int n = 0; n < 3; ++n) {
        ASSERT_EQ(programs.emplace_back().start({meets}, LongFileName(directory.path().string())),
                  0);
    }
    ASSERT_TRUE(eventually([this] { return readFile(directory / "ready") == "..."; }));
    for (const ChildProgram& program : programs) {
        program.requestEnd();
    }
    programs.clear();
    EXPECT_EQ(readFile(directory / "met"), "...");
}

}  // namespace
