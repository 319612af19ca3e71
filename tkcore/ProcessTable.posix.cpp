#include "tkcore/ProcessTable.posix.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tkcore/FileDescriptor.posix.h"

namespace tkcore {

namespace {

using SmallText = std::array<char, 4096>;

/// The beginning of one of the system's files on a process; empty if there is no such process.
std::string_view readProcessFile(const char* format, pid_t process, SmallText& room) noexcept {
    std::array<char, 64> path;
    // The second number is for those files that are a thread's.
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

pid_t parentOf(pid_t process) noexcept {
    SmallText room;
    const std::string_view line = readProcessFile("/proc/%d/stat", process, room);
    // The name in parentheses may hold anything, blanks and parentheses too.
    const std::size_t nameEnd = line.rfind(')');
    constexpr std::size_t kStateLength = 4;  // ") S "
    pid_t parent = 0;
    if (nameEnd != std::string_view::npos && nameEnd + kStateLength < line.size()) {
        std::from_chars(line.data() + nameEnd + kStateLength, line.data() + line.size(), parent);
    }
    return parent;
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
    if (count == 0) {  // not every system has the list
        forEachProcess([&, self = getpid()](pid_t process) {
            if (count < room.size() && parentOf(process) == self) {
                room[count++] = process;
            }
        });
    }
    return count;
}

std::vector<ProcessEntry> descendantsOfThisProcess() {
    std::vector<ProcessEntry> others;
    forEachProcess([&](pid_t process) { others.push_back({process, parentOf(process)}); });
    std::vector<ProcessEntry> found;
    std::set<pid_t> family{getpid()};
    const auto isKin = [&](const ProcessEntry& entry) { return family.contains(entry.parent); };
    // A child may have a lower number than its parent, so once over the list is not enough.
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
