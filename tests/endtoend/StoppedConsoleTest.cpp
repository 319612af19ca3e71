#include <pty.h>
#include <termios.h>

#include "endtoend/EndToEnd.h"

namespace {

/// A console that takes no text at present, because somebody has selected text on it.
class StoppedConsole : public EndToEnd {
protected:
    void SetUp() override {
        EndToEnd::SetUp();
        makeDesign();
        ASSERT_EQ(openpty(&reader, &console, nullptr, nullptr, nullptr), 0);
    }
    void TearDown() override {
        close(console);
        close(reader);
        EndToEnd::TearDown();
    }

    int reader = -1;
    int console = -1;
};

TEST_F(StoppedConsole, keepsNoRunFromCleaningUpAndGetsItsLineInTheEnd) {
    environment["EXTRACTA_STANDIN_FAULT"] = "layer=sleep:300";
    Command shown = command({"-z", "-cell", "design.mcm", "out.vlx"});
    shown.output = ttyname(console);
    ProgramRun program(shown);
    ASSERT_TRUE(eventually([this] { return files().size() > 1; }));
    tcflow(console, TCOOFF);
    const std::set<std::string> delivered{"design.mcm", "out.vlx"};
    EXPECT_TRUE(eventually([&] { return files() == delivered; }));
    EXPECT_TRUE(anyProcessLeft());
    tcflow(console, TCOON);
    EXPECT_EQ(program.wait().exitCode, 0);
    std::string text(4096, '\0');
    text.resize(static_cast<std::size_t>(read(reader, text.data(), text.size())));
    EXPECT_NE(text.find("VLX file written: 0x"), std::string::npos) << text;
}

}  // namespace
