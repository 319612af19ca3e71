#include <gtest/gtest.h>

#include "app/StatusText.h"

namespace {

using velextracta::RunStatus;

constexpr std::uint64_t kMiB = 1 << 20;

std::string shown(const RunStatus& status, std::size_t columns) {
    return velextracta::statusText(status, columns);
}

RunStatus extracting() {
    using std::chrono::seconds;
    RunStatus status;
    status.finished = 9;
    status.elapsed = seconds(3700);
    status.running = {{"conn1_VDD_CORE_PIN", seconds(42)}, {"remainder", seconds(190)}};
    status.waiting = 12;
    status.writtenBytes = 1229 * kMiB;
    return status;
}

TEST(StatusText, showsWhatIsExtractedAsFarAsThereIsRoom) {
    RunStatus status = extracting();
    EXPECT_EQ(
        shown(status, 84),
        "9/23  1:01:40  conn1_VDD_CORE_PIN 0:42  remainder 3:10  +12 waiting  1.2 GiB written");
    EXPECT_EQ(shown(status, 83),
              "9/23  1:01:40  conn1_VDD_CORE_PIN 0:42  +12 waiting  1.2 GiB written");
    EXPECT_EQ(shown(status, 56), "9/23  1:01:40  conn1_VDD_CORE_PIN 0:42  1.2 GiB written");
    EXPECT_EQ(shown(status, 28), "9/23  1:01:40  +12 waiting");
    EXPECT_EQ(shown(status, 2), "9/23");
    status.expected = 25;
    status.isAtLeast = true;
    EXPECT_EQ(shown(status, 16), "9/25+  1:01:40");
}

TEST(StatusText, showsDoneOfAllRateAndTimeLeft) {
    const std::pair<RunStatus::Progress, const char*> cases[] = {
        {{0, 0, 0}, "packing 100%  1:01:40  0 B of 0 B"},
        {{100 * kMiB, 400 * kMiB, 25.5 * kMiB},
         "packing 25%  1:01:40  100 MiB of 400 MiB  26 MiB/s  0:12 left"},
        {{kMiB - 1, kMiB, 1}, "packing 99%  1:01:40  1.0 MiB of 1.0 MiB  1 B/s  0:01 left"},
        {{0, 10240 * kMiB, kMiB}, "packing 0%  1:01:40  0 B of 10 GiB  1.0 MiB/s  2:50:40 left"},
        {{1001, 1000, 1}, "packing 100%  1:01:40  1.0 KiB of 1.0 KiB  1 B/s  0:00 left"},
    };
    for (const auto& [progress, text] : cases) {
        RunStatus status = extracting();
        status.packing = progress;
        EXPECT_EQ(shown(status, 200), text);
    }
    RunStatus status = extracting();
    status.merging = {kMiB, 2 * kMiB, 0};
    EXPECT_EQ(shown(status, 83),
              "9/23  1:01:40  conn1_VDD_CORE_PIN 0:42  merging 50%  1.0 MiB of 2.0 MiB");
}

}  // namespace
