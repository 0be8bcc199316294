// The heap's operations. Invariant: slots 1 to size - 1 of m_heap are the live entries, none costs
// less than its parent, and m_position names the slot of each.
#include "path/min_priority_queue.h"

#include <cstddef>
#include <iostream>
#include <utility>

namespace {

constexpr Qnode kSentinel = {-1, -1.0};
constexpr int kRoot = 1;
constexpr int kPopped = -1;

template <typename T>
T& at(std::vector<T>& values, int i) {
    return values.at(static_cast<std::size_t>(i));
}

}  // namespace

MinPriorityQueue::MinPriorityQueue() : m_heap{kSentinel} {}

void MinPriorityQueue::swap(Qnode& a, Qnode& b, std::vector<int>& position) {
    std::swap(a, b);
    std::swap(at(position, a.index), at(position, b.index));
}

void MinPriorityQueue::prelocate_up(int i) {
    while (i > kRoot && at(m_heap, i / 2).cost > at(m_heap, i).cost) {
        swap(at(m_heap, i / 2), at(m_heap, i), m_position);
        i /= 2;
    }
}

void MinPriorityQueue::prelocate_down(int i) {
    const int last = static_cast<int>(m_heap.size()) - 1;
    while (2 * i <= last) {
        int child = 2 * i;
        if (child < last && at(m_heap, child + 1).cost < at(m_heap, child).cost) {
            ++child;
        }
        if (!(at(m_heap, i).cost > at(m_heap, child).cost)) {
            return;
        }
        swap(at(m_heap, i), at(m_heap, child), m_position);
        i = child;
    }
}

void MinPriorityQueue::push(Qnode q) {
    m_heap.push_back(q);
    const int slot = static_cast<int>(m_heap.size()) - 1;
    m_position.push_back(slot);
    prelocate_up(slot);
}

Qnode MinPriorityQueue::pop_min() {
    if (m_heap.size() <= kRoot) {
        std::cout << "Empty queue\n";
        return m_heap.front();
    }
    const Qnode smallest = m_heap[kRoot];
    at(m_position, smallest.index) = kPopped;
    const Qnode last = m_heap.back();
    m_heap.pop_back();
    if (m_heap.size() > kRoot) {
        m_heap[kRoot] = last;
        at(m_position, last.index) = kRoot;
        prelocate_down(kRoot);
    }
    return smallest;
}
