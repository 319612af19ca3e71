#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/TemporaryDirectory.h"
#include "tkcore/files/InputFile.h"
#include "tkcore/files/OutputFile.h"
#include "tkcore/files/PrivateDirectory.h"

namespace {

using tkcore::AString;
using tkcore::LongFileName;

/// A file that others cannot open while a virus scanner has it open.
class HeldFile : public testing::Test {
protected:
    void SetUp() override {
        writeFile(folder / "held", "older");
        writeFile(folder / "new", "newer");
        hold(0);
    }
    void hold(DWORD sharing, const char* name = "held") {
        scanner = CreateFileW((folder / name).c_str(), GENERIC_READ, sharing, nullptr,
                              OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(scanner, INVALID_HANDLE_VALUE);
    }
    /// Closes the file after a moment, as scanners do.
    std::jthread letGoSoon() const {
        return std::jthread([this] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            CloseHandle(scanner);
        });
    }
    LongFileName named(const std::string& name) const {
        return LongFileName(AString((folder / name).string()));
    }

    const TemporaryDirectory folder;
    HANDLE scanner = INVALID_HANDLE_VALUE;
};

TEST_F(HeldFile, isReadOnceItIsLetGo) {
    const std::jthread end = letGoSoon();
    EXPECT_EQ(tkcore::InputFile(named("held")).size(), 5U);
}

TEST_F(HeldFile, isWrittenOnceItIsLetGo) {
    using tkcore::OutputFile;
    const std::jthread end = letGoSoon();
    OutputFile(named("held"), OutputFile::IfThere::kAppend).write(std::string(" still"));
    EXPECT_EQ(readFile(folder / "held"), "older still");
    // Others may allow the deletion of an open file; it is gone when they close it.
    for (const DWORD sharing : {DWORD{FILE_SHARE_READ}, DWORD{FILE_SHARE_DELETE}}) {
        hold(sharing);
        const std::jthread nextEnd = letGoSoon();
        OutputFile(named("held"), OutputFile::IfThere::kReplace).write(std::string("anew"));
        EXPECT_EQ(readFile(folder / "held"), "anew");
    }
}

TEST_F(HeldFile, isRemovedWithItsDirectoryOnceItIsLetGo) {
    tkcore::PrivateDirectory made(named("made"));
    writeFile(folder / "made/view", "new");
    CloseHandle(scanner);
    hold(FILE_SHARE_READ, "made/view");
    const std::jthread end = letGoSoon();
    made.remove();
    EXPECT_FALSE(std::filesystem::exists(folder / "made"));
}

}  // namespace
