#include <filesystem>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "tkcore/LongFileName.h"

namespace {

namespace fs = std::filesystem;
using tkcore::LongFileName;

TEST(LongFileName, isNotCreatedWhereALinkIsNorDeletedWithWhatALinkPointsTo) {
    const TemporaryDirectory directory;
    fs::create_directories(directory / "kept/deep");
    for (const char* target : {"kept", "nowhere"}) {
        fs::create_directory(directory / "run");
        fs::create_symlink(directory / target, directory / "run/link");
        EXPECT_FALSE(LFN_CreateDirectory(LongFileName((directory / "run/link/").string())));
        EXPECT_TRUE(LFN_Delete(LongFileName((directory / "run/").string()))) << target;
        EXPECT_FALSE(fs::exists(directory / "run"));
        EXPECT_TRUE(fs::exists(directory / "kept/deep"));
    }
}

}  // namespace
