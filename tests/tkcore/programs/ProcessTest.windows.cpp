#include "tkcore/programs/ProcessTest.h"

#include <windows.h>

namespace {

TEST_F(Process, hasNoOtherHandle) {
    constexpr DWORD kNobodyWrites = ERROR_BROKEN_PIPE;
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_TRUE(CreatePipe(&reader, &writer, &inheritable, 0));
    ASSERT_EQ(startProgram("write ready .\nawait end\n"), 0);
    ASSERT_TRUE(eventually([this] { return exists(directory / "ready"); }));
    CloseHandle(writer);
    EXPECT_FALSE(PeekNamedPipe(reader, nullptr, 0, nullptr, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), kNobodyWrites);
    CloseHandle(reader);
    writeFile(directory / "end", "");
    EXPECT_EQ(waitForEnd(), 0);
}

}  // namespace
