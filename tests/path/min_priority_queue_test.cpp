#include "path/min_priority_queue.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <stdexcept>

TEST(MinPriorityQueue, KeepsOrderAndPositionsThroughRandomUse) {
    std::mt19937 random(1);
    MinPriorityQueue queue;
    std::map<int, double> live;
    for (int step = 0; step < 1000; ++step) {
        const auto choice = random() % 5;
        if (choice < 2) {
            const int index = static_cast<int>(queue.m_position.size());
            live[index] = static_cast<double>(random() % 50);
            queue.push({index, live[index]});
        } else if (choice < 3 && !live.empty()) {
            auto entry = std::next(live.begin(), static_cast<long>(random() % live.size()));
            entry->second -= static_cast<double>(random() % 20);
            const int slot = queue.m_position[static_cast<std::size_t>(entry->first)];
            queue.m_heap[static_cast<std::size_t>(slot)].cost = entry->second;
            queue.prelocate_up(slot);
        } else if (!live.empty()) {
            const Qnode smallest = queue.pop_min();
            for (const auto& entry : live) {
                EXPECT_LE(smallest.cost, entry.second);
            }
            ASSERT_EQ(live.erase(smallest.index), 1U);
        }
        ASSERT_EQ(queue.m_heap.size(), live.size() + 1);
        for (int k = 0; k < static_cast<int>(queue.m_position.size()); ++k) {
            const int slot = queue.m_position[static_cast<std::size_t>(k)];
            ASSERT_EQ(slot < 0, live.count(k) == 0);
            if (slot >= 0) {
                const Qnode& entry = queue.m_heap.at(static_cast<std::size_t>(slot));
                ASSERT_EQ(std::pair(entry.index, entry.cost), std::pair(k, live[k]));
            }
        }
    }
}

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
