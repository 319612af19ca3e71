#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

// The tests run here. Programs for Windows are started through what the build names for them.

inline constexpr bool kProgramsForWindows = !std::string_view(PROGRAM_LAUNCHER).empty();

template <typename Value>
constexpr Value hereOrOnWindows(Value here, Value onWindows) {
    return kProgramsForWindows ? onWindows : here;
}

/// What the tested programs call a path of ours.
inline std::string nameThere(const std::filesystem::path& path) {
    std::string name = path.string();
    if (kProgramsForWindows) {
        std::ranges::replace(name, '/', '\\');
        name.insert(0, path.is_absolute() ? "Z:" : "");
    }
    return name;
}
