#include "tkcore/programs/inside/ProcessTable.posix.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/system/FileDescriptor.posix.h"

namespace tkcore {

namespace {

using SmallText = std::array<char, 4096>;

/// The beginning of a process's file in /proc; empty if there is no such process.
std::string_view readProcessFile(const char* format, pid_t process, SmallText& room) noexcept {
    std::array<char, 64> path;
    // The second number is for files of a thread.
    // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral)
    std::snprintf(path.data(), path.size(), format, process, process);
    const FileDescriptor file(open(path.data(), O_RDONLY | O_CLOEXEC));
    const ssize_t size = file ? read(file.get(), room.data(), room.size()) : -1;
    return {room.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

/// Calls the action with every process of the system.
template <typename Action>
void forEachProcess(const Action& action) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir("/proc"), closedir);
    while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
        const char* end = entry->d_name + std::strlen(entry->d_name);
        pid_t process = 0;
        const auto [stop, failure] = std::from_chars(entry->d_name, end, process);
        if (failure == std::errc() && stop == end) {
            action(process);
        }
    }
}

}  // namespace

bool isProcessTableOurs() noexcept {
    std::array<char, 24> target{};
    const ssize_t size = readlink("/proc/self", target.data(), target.size());
    pid_t self = 0;
    std::from_chars(target.data(), target.data() + std::max<ssize_t>(size, 0), self);
    if (self != getpid()) {
        return false;
    }
    // Our number in another namespace may be the same by chance. NSpid lists our number in each
    // namespace, so one number means ours.
    SmallText room;
    std::string_view status = readProcessFile("/proc/%d/status", self, room);
    constexpr std::string_view kNumbers = "\nNSpid:\t";
    const std::size_t numbers = status.find(kNumbers);
    status.remove_prefix(std::min(status.size(), numbers));
    status = status.substr(0, status.find('\n', 1));
    return std::ranges::count(status, '\t') <= 1;
}

ProcessEntry lookUp(pid_t process) noexcept {
    SmallText room;
    const std::string_view line = readProcessFile("/proc/%d/stat", process, room);
    // The name in parentheses may have any characters, also blanks and parentheses.
    const std::size_t nameEnd = line.rfind(')');
    if (nameEnd == std::string_view::npos) {
        return {};
    }
    constexpr int kParent = 2;  // fields counted from there
    constexpr int kStart = 20;
    ProcessEntry entry{process};
    std::string_view rest = line.substr(nameEnd + 1);
    for (int field = 1; field <= kStart && !rest.empty(); ++field) {
        rest.remove_prefix(1);
        const std::string_view text = rest.substr(0, rest.find(' '));
        if (field == kParent) {
            std::from_chars(text.data(), text.data() + text.size(), entry.parent);
        } else if (field == kStart) {
            std::from_chars(text.data(), text.data() + text.size(), entry.start);
        }
        rest.remove_prefix(text.size());
    }
    return entry;
}

bool haveChildren() noexcept {
    siginfo_t info;
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

std::size_t childrenOfThisProcess(std::span<pid_t> room) noexcept {
    if (!haveChildren()) {
        return 0;
    }
    std::size_t count = 0;
    SmallText text;
    std::string_view list = readProcessFile("/proc/%d/task/%d/children", getpid(), text);
    while (count < room.size() && list.find(' ') != std::string_view::npos) {
        std::from_chars(list.data(), list.data() + list.size(), room[count++]);
        list.remove_prefix(list.find(' ') + 1);
    }
    if (count == 0) {  // some systems do not have the list
        forEachProcess([&, self = getpid()](pid_t process) {
            if (count < room.size() && lookUp(process).parent == self) {
                room[count++] = process;
            }
        });
    }
    return count;
}

std::size_t childrenByTrial(std::span<pid_t> room) noexcept {
    constexpr pid_t kUsuallyLargest = pid_t{1} << 15U;  // asking for all takes a second
    constexpr pid_t kLargestNumber = pid_t{1} << 22U;
    std::size_t count = 0;
    for (pid_t process = 1; process <= kLargestNumber && count < room.size(); ++process) {
        siginfo_t info;
        if (waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0) {
            room[count++] = process;
        }
        if (process == kUsuallyLargest && count > 0) {
            break;
        }
    }
    return count;
}

bool killChildren(std::span<pid_t> children) noexcept {
    // A child keeps its number until we reap it, and so does its group. Unless that is our own
    // group, it has only our descendants: a keeper or one of them started its session.
    for (pid_t& child : children) {
        if (const pid_t group = getpgid(child); group > 0 && group != getpgrp()) {
            kill(-group, SIGKILL);
        }
        child = kill(child, SIGKILL) == 0 ? child : 0;
    }
    bool isAnyKilled = false;
    for (const pid_t child : children) {
        isAnyKilled = (child != 0 && waitpid(child, nullptr, 0) == child) || isAnyKilled;
    }
    return isAnyKilled;
}

std::vector<ProcessEntry> descendantsOf(std::set<pid_t> family) {
    std::vector<ProcessEntry> others;
    forEachProcess([&](pid_t process) { others.push_back(lookUp(process)); });
    std::vector<ProcessEntry> found;
    const auto isKin = [&](const ProcessEntry& entry) { return family.contains(entry.parent); };
    // A child may have a lower number than its parent, so one pass over the list is not enough.
    for (;;) {
        const auto kinEnd = std::partition(others.begin(), others.end(), isKin);
        if (kinEnd == others.begin()) {
            return found;
        }
        for (auto kin = others.begin(); kin != kinEnd; ++kin) {
            family.insert(kin->process);
            found.push_back(*kin);
        }
        others.erase(others.begin(), kinEnd);
    }
}

}  // namespace tkcore
