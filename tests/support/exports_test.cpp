// The timers and the tracked memory that the library exports.
#include <gtest/gtest.h>
#include <cstdint>
#include <sstream>

#include "support/fake_clock.h"
#include "support/log_capture.h"
#include "support/timers.h"
#include "support/tracked_memory.h"

namespace {

// 80 bytes more than half the address space, which no allocator grants.
constexpr std::size_t kImpossible = SIZE_MAX / 2 + 1 + 80;

LogLine error(const std::string& text) {
    return {6, "TAG_MEM", text};
}

struct TrackedMemory : testing::Test {
    TrackedMemory() { clearLog(); }
    ~TrackedMemory() override { EXPECT_EQ(gMemStack.m_head, nullptr); }
};

}  // namespace

// The log takes the low 32 bits of the size for a signed number: 80, and 72 for ten times a tenth, as
// 2^63 and 2^31 end in 8.
TEST_F(TrackedMemory, FailuresNameSizeCallerAndLine) {
    EXPECT_EQ(VORN_Malloc_Msg(kImpossible, "a", 1), nullptr);
    EXPECT_EQ(VORN_Calloc(10, kImpossible / 10, "b", 2), nullptr);
    EXPECT_EQ(VORN_New_Mngr(nullptr, "e", 5), nullptr);
    EXPECT_EQ(takeLog(), (Log{error("Failed to allocate 80 bytes in function : a, Line : 1 !"),
                              error("Failed to allocate 72 bytes in function : b, Line : 2 !"),
                              error("Allocation failed in function : e, Line : 5 !")}));
}

TEST_F(TrackedMemory, UnknownAddressesAreReportedAndLeftAlone) {
    int object = 7;
    VORN_Free(&object, "g", 4);
    EXPECT_EQ(VORN_Delete_Mngr(&object, "h", 5), 0);
    EXPECT_EQ(VORN_Delete_Array_Mngr(&object, "i", 6), 0);
    std::ostringstream address;
    address << std::hex << static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&object));
    const auto warning = [&](const char* what, const char* where) {
        return LogLine{5, "TAG_MEM",
                       "Trying to " + (what + address.str()) + " in function : " + where};
    };
    EXPECT_EQ(takeLog(), (Log{warning("free invalid pointer : ", "g, Line : 4 !"),
                              warning("delete invalid pointer : ", "h, Line : 5"),
                              warning("delete invalid pointer array: ", "i, Line : 6")}));
    EXPECT_EQ(object, 7);
}

TEST_F(TrackedMemory, BlocksAreStruckOffAnywhereInTheStack) {
    void* blocks[4];
    for (int i = 0; i < 4; ++i) {
        blocks[i] = VORN_Malloc(8, "f", i);
    }
    int object = 0;
    EXPECT_EQ(VORN_New_Mngr(&object, "f", 4), &object);
    EXPECT_EQ(VORN_Delete_Array_Mngr(&object, "f", 5), 1);
    for (const int i : {1, 0, 3, 2}) {  // middle, tail, head, only one
        VORN_Free(blocks[i], "f", 6);
    }
    VORN_check_memory_status();
    EXPECT_EQ(takeLog(), (Log{{4, "TAG_MEM", "No memory Leak found "}}));
}

TEST_F(TrackedMemory, TheLeakReportListsNewestFirstAndForgets) {
    void* const blocks[] = {VORN_Malloc(16, "first", 1), VORN_Calloc(3, 5, "second", 2)};
    VORN_Mem_Info* const records[] = {gMemStack.m_head->record, gMemStack.m_head->next->record};
    VORN_check_memory_status();
    EXPECT_EQ(
        takeLog(),
        (Log{error("Failed to deallocate 15 bytes allocated in function : second, Line : 2"),
             error("Failed to deallocate 16 bytes allocated in function : first, Line : 1")}));
    for (const int i : {0, 1}) {  // the report releases neither blocks nor records
        VORN_Free_Msg(blocks[i], "f", 4);
        delete records[i];
    }
}

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
