#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Processes.h"
#include "support/TemporaryDirectory.h"
#include "tkcore/PipeUtil.h"
#include "tkcore/Process.h"
#include "tkcore/System.h"

namespace {

namespace fs = std::filesystem;
using tkcore::AString;

class Process : public testing::Test {
protected:
    int start(std::vector<AString> argv) {
        pipe.CreatePipe();
        return tkcore::VeltCreateProcess("", argv.data(), static_cast<int>(argv.size()), handle,
                                         directory.path().string(), nullptr, nullptr,
                                         pipe.writeHandle(), 0, false, true, true, 0);
    }

    int startScript(const std::string& body) {
        return start({AString(writeScript(directory / "program", body).string())});
    }

    int exitCode() {
        int code = 0;
        EXPECT_NE(tkcore::VeltGetProcessExitCode(handle, code), 0);
        return code;
    }

    int waitForEnd() {
        while (exitCode() == tkcore::kStillRunning) {
            tkcore::drainPipe(pipe.readHandle(), output);
            tkcore::sleepMilliseconds(1);
        }
        tkcore::drainPipe(pipe.readHandle(), output);
        return exitCode();
    }

    const TemporaryDirectory directory;
    tkcore::CPipe pipe;
    tkcore::ProcessHandle handle = nullptr;
    AString output;
};

TEST_F(Process, hasItsArgumentsUnsplitAndWithoutTheQuotesAroundThem) {
    const fs::path program =
        writeScript(directory / "print arguments", "printf '[%s]' \"$@\"; exec >&2; pwd\n");
    ASSERT_EQ(start({AString("\"" + program.string() + "\""), "-k", "\"/a b/c.mcm\"", "\"",
                     "say \"it\"", "\"a\"b\"", "", "$HOME *", "\xff"}),
              0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(VEL_ANSI(output), "[-k][/a b/c.mcm][\"][say \"it\"][a\"b][][$HOME *][\xff]" +
                                    directory.path().string() + "\n");
}

TEST_F(Process, hasEmptyInputAndNoOtherDescriptor) {
    const int leak = fcntl(STDIN_FILENO, F_DUPFD, 50);
    ASSERT_GE(leak, 50);  // without FD_CLOEXEC
    ASSERT_EQ(start({"cat"}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    ASSERT_EQ(start({"ls", "/proc/self/fd"}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    close(leak);
    EXPECT_EQ(VEL_ANSI(output), "0\n1\n2\n3\n");  // 3: the directory that is listed
}

TEST_F(Process, reportsHowItEnded) {
    const struct {
        const char* body;
        int code;
    } cases[] = {{"exit 0", 0},       {"exit 3", 3},          {"exit 255", 255},
                 {"kill -9 $$", 137}, {"kill -TERM $$", 143}, {"kill -USR1 $$", 138}};
    for (const auto& [body, code] : cases) {
        ASSERT_EQ(startScript(body), 0);
        EXPECT_EQ(waitForEnd(), code) << body;
        EXPECT_EQ(exitCode(), code) << body;
    }
}

TEST_F(Process, isLookedUpAlongPathOnly) {
    const std::string oldPath = std::getenv("PATH");
    fs::create_directory(directory / "bin");
    fs::create_directory(directory / "other");
    writeScript(directory / "bin/tool", "echo found\n");
    writeScript(directory / "here", "echo wrong\n");
    writeFile(directory / "other/tool", "not executable");
    fs::create_directory(directory / "other/folder");
    setenv("PATH", ((directory / "other").string() + "::" + (directory / "bin").string()).c_str(),
           1);
    EXPECT_EQ(start({"tool"}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(output, "found\n");
    const fs::path before = fs::current_path();
    fs::current_path(directory.path());
    EXPECT_EQ(start({"here"}), ENOENT);
    fs::current_path(before);
    EXPECT_EQ(start({"folder"}), EACCES);
    setenv("PATH", oldPath.c_str(), 1);
}

TEST_F(Process, thatCannotStartGivesTheSystemsErrorCode) {
    writeFile(directory / "text", "no program");
    writeFile(directory / "no-format", "neither script nor binary");
    fs::permissions(directory / "no-format", fs::perms::all);
    EXPECT_EQ(start({AString((directory / "missing").string())}), ENOENT);
    EXPECT_EQ(start({AString((directory / "text").string())}), EACCES);
    EXPECT_EQ(start({AString(directory.path().string())}), EACCES);
    EXPECT_EQ(start({AString((directory / "no-format").string())}), ENOEXEC);
    EXPECT_EQ(start({""}), ENOENT);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a keeper is left";
}

TEST_F(Process, thatFloodsItsOutputIsReadWhole) {
    ASSERT_EQ(startScript("head -c 5000000 /dev/zero | tr '\\0' x\n"), 0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(output.wide(), std::wstring(5'000'000, L'x'));
}

/// A program with a child in another session, and a grandchild that has lost its parent.
const std::string kTree =
    "setsid sh -c 'echo $$ > session; exec sleep 1000' &\n"
    "sh -c 'setsid sh -c \"echo \\$\\$ > orphan; exec sleep 1000\" & exit' &\n"
    "echo $$ > program\n";

class ProcessTree : public Process {
protected:
    /// The program goes on as the commands say.
    int startTree(const std::string& commands) {
        return start({AString(writeScript(directory / "tree", kTree + commands).string())});
    }

    void readTree() {
        for (const char* file : {"program", "session", "orphan"}) {
            tree.push_back(readProcessId(directory / file));
        }
    }

    bool anyRuns() const { return std::ranges::any_of(tree, isRunning); }

    std::vector<pid_t> tree;
};

TEST_F(ProcessTree, isGoneWhenTerminated) {
    ASSERT_EQ(startTree("sleep 1000\n"), 0);
    readTree();
    tkcore::VeltTerminateProcessTree(handle);
    EXPECT_FALSE(anyRuns());
    EXPECT_NE(exitCode(), tkcore::kStillRunning);
    tkcore::VeltTerminateProcessTree(handle);
}

TEST_F(ProcessTree, isGoneOnceTheProgramHasEnded) {
    ASSERT_EQ(startTree("while [ ! -e end ]; do sleep 0.01; done; exit 5\n"), 0);
    readTree();
    writeFile(directory / "end", "");
    EXPECT_EQ(waitForEnd(), 5);
    EXPECT_FALSE(anyRuns());
}

TEST_F(ProcessTree, diesWithUsEvenWhenWeAreKilled) {
    const pid_t parent = fork();
    if (parent == 0) {
        startTree("sleep 1000\n");
        pause();
        _exit(0);
    }
    readTree();
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
    EXPECT_TRUE(eventually([this] { return !anyRuns(); }));
}

TEST_F(ProcessTree, isGoneWhenSomebodyKillsItsKeeper) {
    ASSERT_EQ(startTree("echo $PPID > keeper; sleep 1000\n"), 0);
    readTree();
    kill(readProcessId(directory / "keeper"), SIGKILL);
    EXPECT_EQ(waitForEnd(), 137);
    EXPECT_FALSE(anyRuns());
}

}  // namespace
