#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

// The tests run on this system. They start programs for Windows with the build's emulator.

inline constexpr bool kProgramsForWindows = !std::string_view(PROGRAM_LAUNCHER).empty();

template <typename Value>
constexpr Value hereOrOnWindows(Value here, Value onWindows) {
    return kProgramsForWindows ? onWindows : here;
}

/// Our path in the form of the tested programs' system.
inline std::string nameThere(const std::filesystem::path& path) {
    std::string name = path.string();
    if (kProgramsForWindows) {
        std::ranges::replace(name, '/', '\\');
        name.insert(0, path.is_absolute() ? "Z:" : "");
    }
    return name;
}
