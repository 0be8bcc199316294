#include "support/timers.h"

#include <gtest/gtest.h>

#include "support/fake_clock.h"
#include "support/log_capture.h"

TEST(Timers, AStoppedTimerReadsTheSameSpanInEveryUnit) {
    const FakeClock clock(5900000);
    CpuTimer* timer = create_timer();
    start_cpu_timer(timer);
    FakeClock::set(7100000);
    stop_cpu_timer(timer);
    FakeClock::set(9000000);
    EXPECT_EQ(timer->m_start.seconds, 5);
    EXPECT_EQ(timer->m_start.microseconds, 900000);
    EXPECT_EQ(get_elapsed_time_in_microsec(timer), 1200000.0);
    EXPECT_EQ(timer->m_startMicros, 5900000.0);
    EXPECT_EQ(timer->m_endMicros, 7100000.0);
    EXPECT_DOUBLE_EQ(get_elapsed_time_in_millisec(timer), 1200.0);
    EXPECT_DOUBLE_EQ(get_elapsed_time_in_sec(timer), 1.2);
    stop_cpu_timer(timer);  // a later reading from the same start
    EXPECT_DOUBLE_EQ(get_elapsed_time_in_millisec(timer), 3100.0);
    destroy_timer(timer);
}

TEST(Timers, ARunningTimerFollowsTheClockAndKeepsRunning) {
    const FakeClock clock(1000000);
    CpuTimer* timer = init_timer();
    EXPECT_EQ(timer, g_timer);
    start_cpu_timer(timer);
    FakeClock::set(1000250);
    EXPECT_EQ(get_elapsed_time_in_microsec(timer), 250.0);
    FakeClock::set(3000000);
    EXPECT_EQ(get_elapsed_time_in_microsec(timer), 2000000.0);
    EXPECT_EQ(timer->m_stopped, 0);
    exit_timer();
    EXPECT_EQ(g_timer, timer);
    g_timer = nullptr;
    exit_timer();
}

TEST(Timers, AMissingTimerReadsMinusOneMicrosecond) {
    clearLog();
    start_cpu_timer(nullptr);
    stop_cpu_timer(nullptr);
    destroy_timer(nullptr);
    EXPECT_EQ(get_elapsed_time_in_microsec(nullptr), -1.0);
    EXPECT_EQ(get_elapsed_time_in_millisec(nullptr), -0.001);
    EXPECT_EQ(get_elapsed_time_in_sec(nullptr), -0.000001);
    EXPECT_EQ(takeLog(), Log{});
}

TEST(Timers, TheScopedTimerLogsMillisecondsAcrossASecondBoundary) {
    clearLog();
    {
        const FakeClock clock(5900000);
        const CGElapsedTime scope("stage");
        FakeClock::set(7100000);
    }
    EXPECT_EQ(takeLog(), (Log{{4, "GTime", "stage =1200.000000"}}));
}
