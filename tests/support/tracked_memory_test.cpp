#include "support/tracked_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>

#include "support/log_capture.h"

namespace {

// 80 bytes more than half the address space, which no allocator grants.
constexpr std::size_t kImpossible = SIZE_MAX / 2 + 1 + 80;

LogLine warning(const char* start, const void* address, const char* end) {
    char hex[32];
    std::snprintf(hex, sizeof hex, "%x",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(address)));
    return {5, "TAG_MEM", std::string(start) + hex + end};
}

LogLine error(const std::string& text) {
    return {6, "TAG_MEM", text};
}

// The log takes the low 32 bits of the size for a signed number.
LogLine refusal(std::size_t size, const char* place) {
    return error("Failed to allocate " + std::to_string(static_cast<int>(size)) +
                 " bytes in function : " + place + " !");
}

class TrackedMemory : public testing::Test {
  protected:
    void SetUp() override { clearLog(); }
    void TearDown() override { EXPECT_EQ(gMemStack.m_head, nullptr); }
};

}  // namespace

TEST_F(TrackedMemory, FailuresNameSizeCallerAndLine) {
    EXPECT_EQ(VORN_Malloc_Msg(kImpossible, "a", 1), nullptr);
    EXPECT_EQ(VORN_Calloc(10, kImpossible / 10, "b", 2), nullptr);
    EXPECT_EQ(VORN_New_Mngr(nullptr, "e", 5), nullptr);
    // 2^63 and 2^31 end in 8: ten times a tenth of them plus 80 is 8 short.
    EXPECT_EQ(takeLog(),
              (Log{refusal(kImpossible, "a, Line : 1"), refusal(kImpossible - 8, "b, Line : 2"),
                   error("Allocation failed in function : e, Line : 5 !")}));
}

TEST_F(TrackedMemory, UnknownAddressesAreReportedAndLeftAlone) {
    int object = 7;
    VORN_Free(&object, "g", 4);
    EXPECT_EQ(VORN_Delete_Mngr(&object, "h", 5), 0);
    EXPECT_EQ(VORN_Delete_Array_Mngr(&object, "i", 6), 0);
    EXPECT_EQ(
        takeLog(),
        (Log{warning("Trying to free invalid pointer : ", &object, " in function : g, Line : 4 !"),
             warning("Trying to delete invalid pointer : ", &object, " in function : h, Line : 5"),
             warning("Trying to delete invalid pointer array: ", &object,
                     " in function : i, Line : 6")}));
    EXPECT_EQ(object, 7);
}

TEST_F(TrackedMemory, BlocksAreStruckOffAnywhereInTheStack) {
    void* blocks[4];
    for (int i = 0; i < 3; ++i) {
        blocks[i] = VORN_Malloc(8, "f", i);
    }
    blocks[3] = VORN_Calloc(2, 3, "f", 3);
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
    void* first = VORN_Malloc(16, "first", 1);
    void* second = VORN_Calloc(3, 5, "second", 2);
    VORN_Mem_Info* const records[] = {gMemStack.m_head->record, gMemStack.m_head->next->record};
    VORN_check_memory_status();
    EXPECT_EQ(
        takeLog(),
        (Log{error("Failed to deallocate 15 bytes allocated in function : second, Line : 2"),
             error("Failed to deallocate 16 bytes allocated in function : first, Line : 1")}));
    VORN_Free_Msg(first, "f", 4);  // the report releases neither blocks nor records
    VORN_Free_Msg(second, "f", 5);
    for (const VORN_Mem_Info* record : records) {
        delete record;
    }
}
