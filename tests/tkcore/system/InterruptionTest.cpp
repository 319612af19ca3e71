#include <gtest/gtest.h>

#include "support/Processes.h"
#include "tkcore/system/Interruption.h"

namespace {

using namespace tkcore;

TEST(Interruption, comesBeforeThePointOfNoReturnOrTooLate) {
    noteInterruptions();
    interruptThisProcess();
    ASSERT_TRUE(eventually([] { return interruption() != 0; }));
    EXPECT_THROW(passPointOfNoReturn(), Interrupted);
    EXPECT_THROW(throwIfInterrupted(), Interrupted);

    forgetRequestsToEnd();
    passPointOfNoReturn();
    EXPECT_FALSE(isEndRequested());
    interruptThisProcess();
    ASSERT_TRUE(eventually([] { return isEndRequested(); }));
    EXPECT_EQ(interruption(), 0);
    EXPECT_NO_THROW(passPointOfNoReturn());
    forgetRequestsToEnd();
}

}  // namespace
