#include <gtest/gtest.h>

#include "app/StatusText.h"
#include "tkcore/CodePage.h"

namespace {

using velextracta::RunStatus;

constexpr std::uint64_t kMiB = 1 << 20;

std::string shown(const RunStatus& status, std::size_t columns) {
    return tkcore::narrow(velextracta::statusText(status, columns));
}

RunStatus extracting() {
    using std::chrono::seconds;
    RunStatus status;
    status.finished = 9;
    status.running = {{"conn1_VDD_CORE_PIN", seconds(42)}, {"remainder", seconds(190)}};
    status.waiting = 12;
    status.writtenBytes = 1229 * kMiB;
    return status;
}

TEST(StatusText, showsWhatIsExtractedAsFarAsThereIsRoom) {
    const RunStatus status = extracting();
    EXPECT_EQ(shown(status, 67),
              "9/23  conn1_VDD_CORE_PIN 0:42  remainder 3:10  +12 waiting  1.2 GiB");
    EXPECT_EQ(shown(status, 66), "9/23  conn1_VDD_CORE_PIN 0:42  +12 waiting  1.2 GiB");
    EXPECT_EQ(shown(status, 39), "9/23  conn1_VDD_CORE_PIN 0:42  1.2 GiB");
    EXPECT_EQ(shown(status, 19), "9/23  1.2 GiB");
    EXPECT_EQ(shown(status, 2), "9/23");
}

TEST(StatusText, showsAWarningInWordsFirstWhileItIsNew) {
    RunStatus status = extracting();
    status.warnings = 2;
    status.lastWarning = L"the archive will not be written";
    EXPECT_EQ(shown(status, 89),
              "9/23  conn1_VDD_CORE_PIN 0:42  remainder 3:10  +12 waiting  1.2 GiB  2 warnings  "
              "the arch");
    EXPECT_EQ(shown(status, 88).substr(60), "1.2 GiB  2 warnings");
    status.isWarningNew = true;
    EXPECT_EQ(shown(status, 60), "9/23  conn1_VDD_CORE_PIN 0:42  2 warnings  the archive will ");
    EXPECT_EQ(shown(status, 39), "9/23  2 warnings  the archive will not ");
    EXPECT_EQ(shown(status, 19), "9/23  2 warnings");
}

TEST(StatusText, showsDoneOfAllRateAndTimeLeft) {
    const std::pair<RunStatus::Progress, const char*> cases[] = {
        {{0, 0, 0}, "packing 100%  0 B of 0 B"},
        {{100 * kMiB, 400 * kMiB, 25.5 * kMiB},
         "packing 25%  100 MiB of 400 MiB  26 MiB/s  0:12 left"},
        {{kMiB - 1, kMiB, 1}, "packing 99%  1.0 MiB of 1.0 MiB  1 B/s  0:01 left"},
        {{0, 10240 * kMiB, kMiB}, "packing 0%  0 B of 10 GiB  1.0 MiB/s  2:50:40 left"},
        {{1001, 1000, 1}, "packing 100%  1.0 KiB of 1.0 KiB  1 B/s  0:00 left"},
    };
    for (const auto& [progress, text] : cases) {
        RunStatus status = extracting();
        status.packing = progress;
        EXPECT_EQ(shown(status, 200), text);
    }
    RunStatus status = extracting();
    status.merging = {kMiB, 2 * kMiB, 0};
    EXPECT_EQ(shown(status, 80),
              "9/23  conn1_VDD_CORE_PIN 0:42  merging 50%  1.0 MiB of 2.0 MiB  1.2 GiB");
}

}  // namespace
