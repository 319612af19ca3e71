#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "support/TestSystem.h"
#include "tkcore/files/PathStatus.h"
#include "tkcore/files/PrivateDirectory.h"

namespace {

namespace fs = std::filesystem;
using tkcore::AString;
using tkcore::LongFileName;
using tkcore::PrivateDirectory;

class PrivateDirectoryTest : public testing::Test {
protected:
    LongFileName named(const std::string& name) const {
        return LongFileName(AString((folder / name).string() + "/"));
    }
    const TemporaryDirectory folder;
};

TEST_F(PrivateDirectoryTest, isRemovedWithATreeOfAnyDepth) {
    PrivateDirectory directory(named("run"));
    fs::path deep = folder / "run";
    constexpr int kDepth = 100;
    for (int level = 0; level < kDepth; ++level) {
        writeFile(deep / "file", "x");
        deep /= "d";
        fs::create_directory(deep);
    }
    EXPECT_THAT(directory.contents(), testing::UnorderedElementsAre("d", "file"));
    EXPECT_EQ(directory.name(), PrivateDirectory::Name::kOurs);
    directory.remove();
    EXPECT_TRUE(fs::is_empty(folder.path()));
    EXPECT_EQ(directory.name(), PrivateDirectory::Name::kNothing);
    if (isHere(On::kPosix)) {
        EXPECT_NO_THROW(directory.remove());  // as if somebody else had done it
    }
}

TEST_F(PrivateDirectoryTest, isMadeOnlyWhereNothingIs) {
    writeFile(folder / "file", "x");
    for (const char* name : {"file", "missing/run"}) {
        EXPECT_THROW(PrivateDirectory{named(name)}, std::system_error) << name;
    }
}

TEST_F(PrivateDirectoryTest, cannotLoseItsNameOrIsFoundWithoutIt) {
    PrivateDirectory directory(named("run"));
    writeFile(folder / "run/file", "ours");
    std::error_code refused;
    fs::rename(folder / "run", folder / "moved", refused);
    EXPECT_EQ(!refused, isHere(On::kPosix));
    if (!refused) {
        fs::create_symlink("nowhere", folder / "run");
        EXPECT_EQ(directory.name(), PrivateDirectory::Name::kOther);
        fs::remove(folder / "run");
        fs::create_directory(folder / "run");
        writeFile(folder / "run/file", "somebody else's");
        EXPECT_EQ(directory.name(), PrivateDirectory::Name::kOther);
    }
    EXPECT_EQ(tkcore::fileSize(directory.path().in("file")), 4U);
    directory.remove();
    EXPECT_FALSE(fs::exists(folder / "moved"));
    EXPECT_EQ(fs::exists(folder / "run/file"), !refused);
}

}  // namespace
