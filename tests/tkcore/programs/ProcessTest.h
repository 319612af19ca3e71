#pragma once

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Processes.h"
#include "support/TemporaryDirectory.h"
#include "support/WriteProgram.h"
#include "tkcore/programs/ChildProgram.h"
#include "tkcore/programs/ChildWatch.h"

class Process : public testing::Test {
protected:
    int start(const std::vector<tkcore::AString>& argv) {
        return child.emplace().start(argv, tkcore::LongFileName(directory.path().string()));
    }

    /// Starts a program that follows the commands.
    int startProgram(const std::string& commands) {
        return start({writeProgram(directory / "program", commands).string()});
    }

    int waitForEnd() {
        tkcore::ChildWatch watch;
        watch.add(*child);
        while (child->look() == tkcore::ChildProgram::State::kRunning) {
            watch.wait();
        }
        watch.remove(*child);
        EXPECT_EQ(child->look(), tkcore::ChildProgram::State::kEnded);
        return child->exitCode();
    }

    const TemporaryDirectory directory;
    std::optional<tkcore::ChildProgram> child;
};

class ProcessTree : public Process {
protected:
    void TearDown() override {
        writeFile(directory / "enough", "");
        EXPECT_TRUE(eventually([this] { return !anyRuns(); }));
    }

    /// A program with a child in another session, and a grandchild there that has lost its parent.
    /// Then it follows the commands.
    tkcore::AString writeTree(const std::string& commands) const {
        for (const std::string name : {"session", "orphan"}) {
            writeProgram(directory / name, "write " + name + ".id $pid\\n\nawait enough\n");
        }
        writeProgram(directory / "parent", "start-detached orphan\n");
        return writeProgram(directory / "program",
                            "start-detached session\nstart parent\n"
                            "write root.id $pid\\n\n" +
                                commands)
            .string();
    }

    int startTree(const std::string& commands) { return start({writeTree(commands)}); }

    void readTree() {
        for (const char* file : {"root.id", "session.id", "orphan.id"}) {
            tree.push_back(readProcessId(directory / file));
        }
    }

    /// The program of a tree ends by itself; the others run on.
    void leaveTreeBehind() {
        ASSERT_EQ(startTree("await end\nexit 5\n"), 0);
        readTree();
        writeFile(directory / "end", "");
        EXPECT_EQ(waitForEnd(), 5);
        child.reset();
        EXPECT_FALSE(isRunning(tree[0]));
    }

    bool anyRuns() const { return std::ranges::any_of(tree, isRunning); }

    std::vector<pid_t> tree;
};
