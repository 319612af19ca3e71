#include <chrono>
#include <future>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tkcore/report/inside/ConsoleWriter.windows.h"

namespace {

using tkcore::ConsoleWriter;

constexpr std::chrono::milliseconds kAMoment{1};
constexpr std::chrono::seconds kForEver{100};

/// A console that takes no text while somebody has selected some.
class SelectedConsole : public testing::Test {
protected:
    struct Console final {
        std::promise<void> selectionEnds;
        std::shared_future<void> end = selectionEnds.get_future().share();
        std::promise<void> isReached;
        std::wstring taken;
        int writes = 0;
    };

    std::unique_ptr<ConsoleWriter> newWriter() const {
        return std::make_unique<ConsoleWriter>([there = console](const std::wstring& text) {
            if (there->writes++ == 0) {
                there->isReached.set_value();
            }
            there->end.wait();
            there->taken += text + L"|";
        });
    }

    std::shared_ptr<Console> console = std::make_shared<Console>();
};

TEST_F(SelectedConsole, stopsNobodyAndShowsTheLatestInTheEnd) {
    const std::unique_ptr<ConsoleWriter> writer = newWriter();
    writer->show(L"a");
    console->isReached.get_future().wait();
    writer->show(L"b");
    writer->print(L"first\n");
    writer->show(L"c");
    writer->print(L"second\n");
    writer->show(L"d");
    writer->show(L"e");
    EXPECT_FALSE(writer->waitFor(kAMoment));
    console->selectionEnds.set_value();
    EXPECT_TRUE(writer->waitFor(kForEver));
    EXPECT_EQ(console->taken, L"a|first\nsecond\ne|");
}

TEST_F(SelectedConsole, isNotWaitedForAtTheEnd) {
    newWriter()->show(L"a");
    console->isReached.get_future().wait();
    console->selectionEnds.set_value();
}

}  // namespace
