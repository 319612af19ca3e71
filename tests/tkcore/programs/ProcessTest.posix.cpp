#include "tkcore/programs/ProcessTest.h"

#include <array>
#include <csignal>
#include <list>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/programs/inside/ProcessTable.posix.h"

namespace {

namespace fs = std::filesystem;
using tkcore::AString;
using tkcore::ChildProgram;
using tkcore::LongFileName;

TEST_F(Process, hasEmptyInputAndNoOtherDescriptor) {
    const int leak = fcntl(STDIN_FILENO, F_DUPFD, 50);
    ASSERT_GE(leak, 50);  // without FD_CLOEXEC
    ASSERT_EQ(start({"cat"}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    ASSERT_EQ(start({"ls", "/proc/self/fd"}), 0);
    EXPECT_EQ(waitForEnd(), 0);
    close(leak);
    EXPECT_EQ(child->output().text(), "0\n1\n2\n3\n");  // 3: the directory that is listed
}

class ScriptTree : public ProcessTree {
protected:
    int startScript(const std::string& body) {
        return start({writeScript(directory / "script", body).string()});
    }
};

TEST_F(ScriptTree, isLeftAloneWhenTheKeeperOfAnotherTreeIsKilled) {
    leaveTreeBehind();
    ASSERT_EQ(startScript("sleep 1000 & echo $PPID > keeper; echo $! > other; wait\n"), 0);
    const pid_t other = readProcessId(directory / "other");
    kill(readProcessId(directory / "keeper"), SIGKILL);
    EXPECT_EQ(waitForEnd(), 137);
    EXPECT_FALSE(isRunning(other));
    EXPECT_TRUE(isRunning(tree[1]) && isRunning(tree[2]));
}

class AskedTree : public ScriptTree {
protected:
    /// A script that notes its start and the request to end; then it follows the commands.
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
        kill(noted("ready").front(), SIGSTOP);  // a suspended one is woken up
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

TEST_F(AskedTree, isEndedAlthoughItSuspendsItsKeeper) {
    ASSERT_EQ(start({writeAsked("suspending", "kill -STOP $PPID")}), 0);
    awaitAll("ready", 1);
    child.reset();
    EXPECT_FALSE(isRunning(noted("ready").front()));
}

TEST_F(AskedTree, isAskedToEndAtTheSameTimeAsOthers) {
    // Each waits until all are asked. If they were asked one by one, it would be killed before.
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

TEST_F(ScriptTree, isGoneWhenSomebodyKillsItsKeeper) {
    writeTree("await enough\n");
    ASSERT_EQ(startScript("echo $PPID > keeper; exec ./program\n"), 0);
    readTree();
    kill(readProcessId(directory / "keeper"), SIGKILL);
    EXPECT_EQ(waitForEnd(), 137);
    EXPECT_FALSE(anyRuns());
}

TEST(KilledChildren, takeTheirGroupsWithThem) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const pid_t started = fork();
    if (started == 0) {
        setpgid(0, 0);
        if (fork() == 0) {
            write(ends[1], "", 1);
        }
        pause();
    }
    close(ends[1]);
    const auto receives = [&](ssize_t count) {
        char byte = 0;
        return eventually([&, count] { return read(ends[0], &byte, 1) == count; });
    };
    ASSERT_TRUE(receives(1));
    std::array children{started};
    EXPECT_TRUE(tkcore::killChildren(children));
    EXPECT_TRUE(receives(0)) << "the child's child still runs";
    close(ends[0]);
}

}  // namespace
