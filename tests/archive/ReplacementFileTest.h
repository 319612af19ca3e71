#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "tkcore/ReplacementFile.h"

namespace tkcore {
namespace fs = std::filesystem;

class ReplacementFileTest : public testing::Test {
protected:
    static void replace(const fs::path& path, const std::string& text) {
        ReplacementFile file(path.string());
        file.write(text.data(), text.size());
        file.commit();
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            found.push_back(entry.path().filename().string());
        }
        return found;
    }
    /// The failure must name the path and have this code of the system.
    static void expectFailure(const fs::path& path, int error) {
        try {
            replace(path, "new");
            ADD_FAILURE() << path << " was accepted";
        } catch (const std::system_error& failure) {
            EXPECT_THAT(failure.what(), testing::HasSubstr(path.string()));
            EXPECT_EQ(failure.code().value(), error) << failure.what();
        }
    }

    TemporaryDirectory folder;
};

}  // namespace tkcore
