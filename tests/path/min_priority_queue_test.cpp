#include "path/min_priority_queue.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <stdexcept>

namespace {

// Heap order, and a position for every pushed entry that names its slot or says that it is gone.
void expectConsistent(const MinPriorityQueue& queue, const std::map<int, double>& live) {
    ASSERT_EQ(queue.m_heap.size(), live.size() + 1);
    EXPECT_EQ(queue.m_heap[0].index, -1);
    for (std::size_t i = 2; i < queue.m_heap.size(); ++i) {
        EXPECT_LE(queue.m_heap[i / 2].cost, queue.m_heap[i].cost);
    }
    for (std::size_t k = 0; k < queue.m_position.size(); ++k) {
        const auto entry = live.find(static_cast<int>(k));
        if (entry == live.end()) {
            EXPECT_EQ(queue.m_position[k], -1);
        } else {
            const Qnode& slot = queue.m_heap.at(static_cast<std::size_t>(queue.m_position[k]));
            EXPECT_EQ(slot.index, entry->first);
            EXPECT_EQ(slot.cost, entry->second);
        }
    }
}

TEST(MinPriorityQueue, StaysConsistentThroughRandomUse) {
    std::mt19937 random(1);
    MinPriorityQueue queue;
    std::map<int, double> live;
    for (int step = 0; step < 3000; ++step) {
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
        if (step % 50 == 0) {
            expectConsistent(queue, live);
        }
    }
}

TEST(MinPriorityQueue, EqualCostsKeepTheEarlierEntryAbove) {
    MinPriorityQueue queue;
    for (int k = 0; k < 4; ++k) {
        queue.push({k, 7.0});
    }
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(queue.m_position[static_cast<std::size_t>(k)], k + 1);
    }
    // The last entry takes the root's place and, not dearer than its children, stays there.
    EXPECT_EQ(queue.pop_min().index, 0);
    EXPECT_EQ(queue.m_heap[1].index, 3);
}

TEST(MinPriorityQueue, EmptyPopPrintsAndReturnsTheSentinel) {
    MinPriorityQueue queue;
    queue.push({0, 2.5});
    EXPECT_EQ(queue.pop_min().index, 0);
    testing::internal::CaptureStdout();
    const Qnode none = queue.pop_min();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Empty queue\n");
    EXPECT_EQ(none.index, -1);
    EXPECT_EQ(none.cost, -1.0);
}

TEST(MinPriorityQueue, AnIndexThatBreaksTheCouplingRaisesARangeError) {
    MinPriorityQueue queue;
    queue.push({0, 2.0});
    EXPECT_THROW(queue.push({5, 1.0}), std::out_of_range);
}

}  // namespace
