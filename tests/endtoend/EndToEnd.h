#pragma once

#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Archive.h"
#include "support/Processes.h"
#include "support/ProgramRun.h"
#include "support/TemporaryDirectory.h"
#include "support/TestedPrograms.h"
#include "support/WriteProgram.h"

/// The built VelExtracta beside a small generated design, with the stand-in extractor.
class EndToEnd : public testing::Test {
protected:
    using Strings = std::vector<std::string>;

    void makeDesign(const Strings& options = {"--nets", "30", "--records", "1500"}) {
        Strings arguments{MAKE_DESIGN};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(nameThere(design));
        const Outcome made = runProgram({arguments, {}, {}, {}});
        ASSERT_EQ(made.exitCode, 0) << made.errors;
    }

    void SetUp() override { environment["TKCORE_LOG"] = "1:" + nameThere(tools / "log"); }

    void TearDown() override {
        if (HasFailure()) {
            std::cout << "the program's log:\n" << readFile(tools / "log") << '\n';
        }
        for (const pid_t process : processesWith(directory.path().filename())) {
            kill(process, SIGKILL);
        }
    }

    Command command(const Strings& arguments) const {
        Command result{{VELEXTRACTA}, environment, directory.path(), limits};
        result.arguments.insert(result.arguments.end(), arguments.begin(), arguments.end());
        return result;
    }

    Outcome run(const Strings& arguments) const {
        Outcome outcome = runProgram(command(arguments));
        EXPECT_EQ(outcome.output.ends_with("\r\n"), kProgramsForWindows && !outcome.output.empty());
        for (std::string* text : {&outcome.output, &outcome.errors}) {
            std::erase_if(*text, [](char c) { return kProgramsForWindows && c == '\r'; });
        }
        return outcome;
    }

    /// Makes the program see a machine on which so many processes may run at once.
    void limitProcesses(int limit) { failCalls("HARDWARE_THREADS", std::to_string(2 * limit + 1)); }

    /// Makes a system call of the program fail or answer otherwise; see SystemCalls.cpp.
    void failCalls(const char* which, const std::string& how) {
        environment["LD_PRELOAD"] = SYSTEM_CALLS;
        environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
        environment[which] = how;
    }

    /// Replaces extracta by a program that follows these commands; see ScriptedProgram.cpp.
    void useScript(const std::string& commands) {
        environment["VELTAR_EXTRACTA_PATHOVERRIDE"] =
            nameThere(writeProgram(tools / "the extracta", commands));
    }

    /// The command to continue as the stand-in.
    static std::string goOn() { return "become " + nameThere(EXTRACTA_STANDIN) + "\n"; }

    /// Everything in the test's directory, by path relative to it.
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.path())) {
            names.insert(entry.path().lexically_relative(directory.path()).string());
        }
        return names;
    }

    /// The same with the bytes of files and the targets of links.
    std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> found;
        for (const std::string& name : files()) {
            const std::filesystem::path path = directory / name;
            found[name] = std::filesystem::is_symlink(path)        ? read_symlink(path).string()
                          : std::filesystem::is_regular_file(path) ? readFile(path)
                                                                   : "";
        }
        return found;
    }

    /// The running processes that the predicate picks by their folder in /proc.
    static std::vector<pid_t> processesIf(
        const std::function<bool(const std::filesystem::path&)>& picks) {
        std::vector<pid_t> found;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const std::string id = entry.path().filename();
            if (id.find_first_not_of("0123456789") == std::string::npos && picks(entry.path()) &&
                isRunning(std::stoi(id))) {
                found.push_back(std::stoi(id));
            }
        }
        return found;
    }

    /// Whether the process has the test's directory on its command line, or stands in it.
    bool isOurs(const std::filesystem::path& process) const {
        std::error_code error;
        const std::string folder = read_symlink(process / "cwd", error);
        const std::string name = directory.path().filename();
        return (readFile(process / "cmdline") + folder).find(name) != std::string::npos;
    }

    /// Those of this test that have the text on their command line; others run at the same time.
    std::vector<pid_t> processesWith(const std::string& text) const {
        return processesIf([&](const std::filesystem::path& process) {
            return readFile(process / "cmdline").find(text) != std::string::npos && isOurs(process);
        });
    }

    /// Whether a process of this test runs. If the starter of a process for Windows is killed
    /// during the start, that process may stay in the launcher for ever and never begin.
    bool anyProcessLeft() const {
        return !processesIf([&](const std::filesystem::path& process) {
                    const std::string line = readFile(process / "cmdline");
                    const bool hasBegun =
                        !kProgramsForWindows || !line.starts_with(PROGRAM_LAUNCHER);
                    return hasBegun && isOurs(process);
                }).empty();
    }

    /// Waits for a moment, because an emulated process may end later than the programs see.
    bool isEveryProcessGone() const {
        const auto isGone = [this] { return !anyProcessLeft(); };
        return kProgramsForWindows ? eventually(isGone) : isGone();
    }

    /// The packed files by their names without folder.
    static std::map<std::string, std::string> packed(const std::filesystem::path& archive) {
        std::map<std::string, std::string> result;
        for (const ArchiveEntry& entry : readArchive(archive)) {
            result[std::filesystem::path(entry.name).filename()] = entry.bytes;
        }
        return result;
    }

    const TemporaryDirectory directory;
    const TemporaryDirectory tools;
    const std::filesystem::path design = directory / "design.mcm";
    std::map<std::string, std::string> environment{
        {"VELTAR_EXTRACTA_PATHOVERRIDE", nameThere(EXTRACTA_STANDIN)}};
    std::vector<std::pair<int, rlim_t>> limits;
};
