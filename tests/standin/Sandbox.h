#pragma once

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

struct Outcome {
    int waitStatus = 0;
    std::string printed;  // standard output and standard error
};

// A fresh directory; programs are started as a shell would, and no fault or trace is inherited.
class Sandbox : public testing::Test {
protected:
    Sandbox() {
        std::string pattern = testing::TempDir() + "standin-XXXXXX";
        directory = ::mkdtemp(pattern.data());
        ::unsetenv("EXTRACTA_STANDIN_FAULT");
        ::unsetenv("EXTRACTA_STANDIN_TRACE");
    }
    ~Sandbox() override { std::filesystem::remove_all(directory); }

    std::string at(const std::string& name) const { return (directory / name).string(); }

    std::string read(const std::string& name) const {
        std::ifstream file(at(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    // The text is written with CR LF line ends.
    void writeControlFile(const std::string& text) const {
        std::ofstream file(at("control.txt"), std::ios::binary);
        for (const char character : text) {
            file << (character == '\n' ? "\r\n" : std::string(1, character));
        }
    }

    void executeSql(const std::string& sql) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(at("design.mcm").c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }

    Outcome start(std::vector<std::string> words) const {
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, at("printed").c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
        pid_t child = 0;
        Outcome outcome;
        EXPECT_EQ(
            posix_spawn(&child, words[0].c_str(), &actions, nullptr, arguments.data(), environ), 0);
        EXPECT_EQ(::waitpid(child, &outcome.waitStatus, 0), child);
        posix_spawn_file_actions_destroy(&actions);
        outcome.printed = read("printed");
        return outcome;
    }

    Outcome extract(std::initializer_list<std::string> outputs = {"out.txt"}) const {
        std::vector<std::string> words{EXTRACTA_STANDIN_PATH, "-k", "-c", "-m", at("design.mcm"),
                                       at("control.txt")};
        for (const std::string& output : outputs) {
            words.push_back(output.starts_with('/') ? output : at(output));
        }
        return start(std::move(words));
    }

    Outcome makeDesign(std::vector<std::string> options) const {
        options.insert(options.begin(), MAKE_DESIGN_PATH);
        return start(std::move(options));
    }

    static bool succeeded(const Outcome& outcome) { return outcome.waitStatus == 0; }

    // Failures are told in a single line, with exit code 1.
    static bool failedWith(const Outcome& outcome, const std::string& fragment) {
        return WIFEXITED(outcome.waitStatus) && WEXITSTATUS(outcome.waitStatus) == 1 &&
               outcome.printed.find(fragment) != std::string::npos &&
               outcome.printed.find('\n') == outcome.printed.size() - 1;
    }

    std::filesystem::path directory;
};
