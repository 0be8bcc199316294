#include "path/min_priority_queue.h"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(MinPriorityQueue, EqualCostsKeepTheEarlierEntryAbove) {
    MinPriorityQueue queue;
    for (int k = 0; k < 4; ++k) {
        queue.push({k, 7.0});
    }
    EXPECT_EQ(queue.m_position, (std::vector{1, 2, 3, 4}));
    // The last entry takes the root's place and, not dearer than its children, stays there.
    EXPECT_EQ(queue.pop_min().index, 0);
    EXPECT_EQ(queue.m_heap[1].index, 3);
}

TEST(MinPriorityQueue, EmptyPopPrintsAndReturnsTheSentinel) {
    MinPriorityQueue queue;
    testing::internal::CaptureStdout();
    const Qnode none = queue.pop_min();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Empty queue\n");
    EXPECT_EQ(std::pair(none.index, none.cost), std::pair(-1, -1.0));
    queue.push({0, 2.0});
    EXPECT_THROW(queue.push({5, 1.0}), std::out_of_range);  // breaks the order of indices
}
