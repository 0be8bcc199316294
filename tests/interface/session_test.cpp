#include <gtest/gtest.h>

#include "support/log_capture.h"

extern "C" int runSessionInC(void);

namespace {

TEST(SessionInC, RunsAndRunsAgain) {
    EXPECT_EQ(runSessionInC(), 0);
    EXPECT_EQ(takeErrors(), Log{});
    EXPECT_EQ(runSessionInC(), 0);
    clearLog();
}

}  // namespace
