#pragma once

#include <filesystem>
#include <string>

#include "support/TemporaryDirectory.h"

/// Makes a program at the path that follows the commands; see ScriptedProgram.cpp. Returns its
/// path, which on Windows ends in ".exe".
inline std::filesystem::path writeProgram(std::filesystem::path path, const std::string& commands) {
    const std::filesystem::path scriptedProgram = SCRIPTED_PROGRAM;
    writeFile(std::filesystem::path(path) += ".commands", commands);
    path += scriptedProgram.extension();
    std::error_code error;
    if (!std::filesystem::exists(path)) {
        std::filesystem::create_hard_link(scriptedProgram, path, error);
    }
    if (error) {
        std::filesystem::copy_file(scriptedProgram, path);
    }
    return path;
}
