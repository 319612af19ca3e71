#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "support/ProgramRun.h"
#include "support/TemporaryDirectory.h"

/// A fresh directory with the two programs beside it.
class Sandbox : public testing::Test {
protected:
    std::string at(const std::string& name) const { return directory / name; }
    /// Its path in the form of the programs' system.
    std::string there(const std::string& name) const { return nameThere(directory / name); }
    std::string read(const std::string& name) const { return readFile(at(name)); }

    /// The text is written with CR LF line ends.
    void writeControlFile(const std::string& text) const {
        std::string bytes;
        for (const char character : text) {
            bytes += character == '\n' ? "\r\n" : std::string(1, character);
        }
        writeFile(at("control.txt"), bytes);
    }

    void executeSql(const std::string& sql) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(at("design.mcm").c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }

    Outcome extract(std::initializer_list<std::string> outputs = {"out.txt"}) const {
        std::vector<std::string> words{EXTRACTA_STANDIN,    "-k", "-c", "-m", there("design.mcm"),
                                       there("control.txt")};
        for (const std::string& output : outputs) {
            words.push_back(there(output));
        }
        return runProgram({words, {}, {}, {}});
    }

    Outcome makeDesign(std::vector<std::string> options) const {
        options.insert(options.begin(), MAKE_DESIGN);
        return runProgram({options, {}, {}, {}});
    }

    /// Expects a failure: a single line, and exit code 1.
    static void expectFailure(const Outcome& outcome, const std::string& fragment) {
        const std::string printed = outcome.output + outcome.errors;
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_NE(printed.find(fragment), std::string::npos) << printed;
        EXPECT_EQ(printed.find('\n'), printed.size() - 1) << printed;
    }

    const TemporaryDirectory directory;
};
