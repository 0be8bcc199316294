#include "support/timers.h"

#include <gtest/gtest.h>

#include "support/fake_clock.h"
#include "support/log_capture.h"

TEST(Timers, AStoppedTimerKeepsItsReadingAndARunningOneFollowsTheClock) {
    const FakeClock clock(5900000);
    CpuTimer* timer = init_timer();
    EXPECT_EQ(timer, g_timer);
    start_cpu_timer(timer);
    FakeClock::set(5900250);
    EXPECT_EQ(get_elapsed_time_in_microsec(timer), 250.0);
    FakeClock::set(7100000);
    stop_cpu_timer(timer);
    FakeClock::set(9000000);
    EXPECT_DOUBLE_EQ(get_elapsed_time_in_sec(timer), 1.2);
    EXPECT_EQ(timer->m_startMicros, 5900000.0);
    stop_cpu_timer(timer);  // a later reading from the same start
    EXPECT_DOUBLE_EQ(get_elapsed_time_in_millisec(timer), 3100.0);
    exit_timer();
    EXPECT_EQ(g_timer, timer);
}

TEST(Timers, LogNothingOfAMissingTimerAndMillisecondsOfAScope) {
    clearLog();
    start_cpu_timer(nullptr);
    stop_cpu_timer(nullptr);
    destroy_timer(nullptr);
    EXPECT_EQ(get_elapsed_time_in_millisec(nullptr), -0.001);
    {
        const FakeClock clock(5900000);
        const CGElapsedTime scope("stage");
        FakeClock::set(7100000);
    }
    EXPECT_EQ(takeLog(), (Log{{4, "GTime", "stage =1200.000000"}}));
}
