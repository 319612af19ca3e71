#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Processes.h"
#include "support/TemporaryDirectory.h"
#include "tkcore/ChildProgram.h"
#include "tkcore/ChildWatch.h"

namespace {

namespace fs = std::filesystem;
using tkcore::AString;
using tkcore::ChildProgram;
using tkcore::LongFileName;

class Process : public testing::Test {
protected:
    int start(const std::vector<AString>& argv) {
        return child.emplace().start(argv, LongFileName(directory.path().string()));
    }

    int startScript(const std::string& body) {
        return start({AString(writeScript(directory / "program", body).string())});
    }

    int waitForEnd() {
        tkcore::ChildWatch watch;
        watch.add(*child);
        while (child->look() == ChildProgram::State::kRunning) {
            watch.wait();
        }
        watch.remove(*child);
        EXPECT_EQ(child->look(), ChildProgram::State::kEnded);
        return child->exitCode();
    }

    const TemporaryDirectory directory;
    std::optional<ChildProgram> child;
};

TEST_F(Process, hasItsArgumentsUnsplitAndWithoutTheQuotesAroundThem) {
    const fs::path program =
        writeScript(directory / "print arguments", "printf '[%s]' \"$@\"; exec >&2; pwd\n");
    ASSERT_EQ(start({AString("\"" + program.string() + "\""), "-k", "\"/a b/c.mcm\"", "\"",
                     "say \"it\"", "\"a\"b\"", "", "$HOME *", "\xff"}),
              0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(child->output(), "[-k][/a b/c.mcm][\"][say \"it\"][a\"b][][$HOME *][\xff]" +
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
    EXPECT_EQ(child->output(), "0\n1\n2\n3\n");  // 3: the directory that is listed
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
    }
}

TEST_F(Process, isLookedUpAlongPathOnly) {
    const char* path = std::getenv("PATH");
    const std::string oldPath = path == nullptr ? "" : path;
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
    EXPECT_EQ(child->output(), "found\n");
    const fs::path before = fs::current_path();
    fs::current_path(directory.path());
    EXPECT_EQ(start({"here"}), ENOENT);
    fs::current_path(before);
    EXPECT_EQ(start({"folder"}), EACCES);
    setenv("PATH", oldPath.c_str(), 1);
}

TEST_F(Process, givesTheSystemsErrorCodeWhereItCannotStart) {
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

TEST_F(Process, isReadWholeThoughItFloodsItsOutput) {
    ASSERT_EQ(startScript("head -c 5000000 /dev/zero | tr '\\0' x\n"), 0);
    EXPECT_EQ(waitForEnd(), 0);
    EXPECT_EQ(child->output(), std::string(5'000'000, 'x'));
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

TEST_F(ProcessTree, isGoneWhenDropped) {
    ASSERT_EQ(startTree("sleep 1000\n"), 0);
    readTree();
    child.reset();
    EXPECT_FALSE(anyRuns());
}

TEST_F(ProcessTree, leavesAloneWhatAProgramLeftBehindThatCameToItsOwnEnd) {
    ASSERT_EQ(startTree("while [ ! -e end ]; do sleep 0.01; done; exit 5\n"), 0);
    readTree();
    writeFile(directory / "end", "");
    EXPECT_EQ(waitForEnd(), 5);
    child.reset();
    // Nor does the end of another tree's keeper, whose orphans fall to us as well, touch it.
    ASSERT_EQ(startScript("sleep 1000 & echo $PPID > keeper; echo $! > other; wait\n"), 0);
    const pid_t other = readProcessId(directory / "other");
    kill(readProcessId(directory / "keeper"), SIGKILL);
    EXPECT_EQ(waitForEnd(), 137);
    EXPECT_FALSE(isRunning(other));
    EXPECT_FALSE(isRunning(tree[0]));
    for (const pid_t leftBehind : {tree[1], tree[2]}) {
        EXPECT_TRUE(isRunning(leftBehind));
        kill(leftBehind, SIGKILL);
    }
}

class AskedTree : public ProcessTree {
protected:
    /// A script that notes that it runs, and that it has been asked to end; then it does as told.
    AString writeAsked(const std::string& name, const std::string& then) const {
        const std::string body = "exec >/dev/null 2>&1; trap 'echo > asked.$$; " + then +
                                 "' TERM; echo > ready.$$; while :; do sleep 0.01; done\n";
        return writeScript(directory / name, body).string();
    }

    /// The processes that have noted something.
    std::vector<pid_t> noted(const std::string& what) const {
        std::vector<pid_t> found;
        for (const auto& entry : fs::directory_iterator(directory.path())) {
            if (entry.path().stem() == what) {
                found.push_back(std::stoi(entry.path().extension().string().substr(1)));
            }
        }
        return found;
    }

    void awaitAll(const std::string& what, std::size_t count) {
        ASSERT_TRUE(eventually([&] { return noted(what).size() == count; })) << what;
    }
};

TEST_F(AskedTree, isAskedToEndBeforeItIsKilled) {
    writeAsked("polite", "exit 0");
    writeAsked("stubborn", ":");
    const auto tellApart = [this](bool weAreKilled) {
        const pid_t parent = weAreKilled ? fork() : 0;
        if (parent == 0) {
            ASSERT_EQ(startScript("setsid ./stubborn & ./polite & exec ./polite\n"), 0);
        }
        if (weAreKilled && parent == 0) {
            pause();
        }
        awaitAll("ready", 3);
        kill(noted("ready").front(), SIGSTOP);  // one that is suspended is woken up
        if (weAreKilled) {
            kill(parent, SIGKILL);
            waitpid(parent, nullptr, 0);
        } else {
            child.reset();
        }
        awaitAll("asked", 3);
        for (const pid_t process : noted("ready")) {
            EXPECT_TRUE(eventually([=] { return !isRunning(process); }));
            fs::remove(directory / ("ready." + std::to_string(process)));
            fs::remove(directory / ("asked." + std::to_string(process)));
        }
    };
    tellApart(false);
    tellApart(true);
}

TEST_F(AskedTree, isAskedToEndAtTheSameTimeAsOthers) {
    // Each waits for the others to be asked; asked one after the other it would be killed before.
    const AString meets = writeAsked(
        "meets", "until [ $(ls asked.* | wc -l) = 3 ]; do sleep 0.01; done; echo > met.$$; exit");
    std::list<ChildProgram> programs;
    for (int n = 0; n < 3; ++n) {
        ASSERT_EQ(programs.emplace_back().start({meets}, LongFileName(directory.path().string())),
                  0);
    }
    awaitAll("ready", 3);
    for (const ChildProgram& program : programs) {
        program.requestEnd();
    }
    programs.clear();
    EXPECT_EQ(noted("met").size(), 3U);
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
