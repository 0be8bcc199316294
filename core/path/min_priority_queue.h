// MinPriorityQueue: a binary min-heap that knows the place of every entry, so that the cost of one
// that is still queued can be lowered in place.
//
// The k-th entry ever pushed must carry the index k, because positions are kept in the order of
// pushes and looked up by index. Other indices raise std::out_of_range. To lower a cost, write it
// into m_heap[m_position[index]] and call prelocate_up on that slot.
//
// Threads: a queue belongs to one thread.
#pragma once

#include <vector>

#include "support/export.h"

struct Qnode {
    int index;
    double cost;  // the priority; smaller comes first
};

class SEGCORE_API MinPriorityQueue {
  public:
    std::vector<Qnode> m_heap;    // slot 0 holds a sentinel {-1, -1}; children of i: 2i and 2i + 1
    std::vector<int> m_position;  // heap slot of the k-th pushed entry, -1 once it has been popped

    MinPriorityQueue();

    // Exchanges two entries and what `position` says of them.
    void swap(Qnode& a, Qnode& b, std::vector<int>& position);
    // Restore the heap order from slot i towards the root or the leaves. Equal costs stay put, so
    // of two equal entries the earlier one remains above.
    void prelocate_up(int i);
    void prelocate_down(int i);

    void push(Qnode q);
    // Removes and returns the entry of the smallest cost. An empty queue prints "Empty queue" on
    // the standard output and returns the sentinel, known by its index -1.
    Qnode pop_min();
};
