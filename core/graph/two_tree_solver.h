// The search of max_flow.cpp on a denser store, for whole graphs: one state byte a node instead of
// its record, paths remembered while they are walked, distances remembered while they hold. Queues,
// scans and roundings come in the same order, so the result is the same bit for bit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "graph/graph.h"

class TwoTreeSolver {
  public:
    // `graph` is initialised (VORNSEGraph::maxflowInit) and outlives the solver.
    explicit TwoTreeSolver(VORNSEGraph& graph);

    // False without memory, for a graph that is not completely built or without spare slots behind
    // the last node's, and for one with an edge that leaves the image, whose wrap-around the dense
    // scan would follow.
    bool canSolve() const;

    // Runs the search and writes trees and queues back into the graph's records, also when it is
    // stopped early. Throws std::bad_alloc without memory.
    void run();

  private:
    // First-in-first-out queue of node numbers.
    class Queue {
      public:
        bool empty() const { return m_count == 0; }
        void push(int node) {
            if (m_count == m_ring.size()) {
                grow();
            }
            m_ring[(m_head + m_count++) & (m_ring.size() - 1)] = node;
        }
        int pop() {
            const int node = m_ring[m_head];
            m_head = (m_head + 1) & (m_ring.size() - 1);
            --m_count;
            return node;
        }

      private:
        void grow();

        std::vector<int> m_ring;  // a power of two long
        std::size_t m_head = 0;
        std::size_t m_count = 0;
    };

    // A walked path from one end of the meeting edge to the root of its tree.
    struct Path {
        struct Step {
            int slot;  // in the direction of the flow
            int node;  // the child on this edge, orphaned when the edge saturates
        };
        std::vector<Step> steps;  // only the first `length` count
        std::size_t length = 0;
        int root = 0;
    };

    struct Free {
        void operator()(void* block) const;
    };
    template <typename T>
    using Zeroed = std::unique_ptr<T[], Free>;

    void importRecords();
    void exportRecords();
    template <int kTree>
    bool growOrAugment(int node);
    void augment(int slot, int sourceEnd, int sinkEnd);
    float walkToRoot(Path& path, int node, int sisterBit, float bottleneck);
    void pushFlow(const Path& path, float amount);
    void adoptOrphans();
    template <int kTree>
    void adopt(int node);
    int distance(int node, int limit);
    void startStage();
    void activate(int node);
    void makeOrphan(int node);
    int directionCount(int node) const;
    int directionOf(int node, int slot) const;

    VORNSEGraph& m_graph;
    float* const m_caps;
    nodes* const m_records;
    const int m_nodeCount;
    const int m_lastRow;  // first node of the bottom row, which has no neighbours below
    int m_headOffset[kSlotsPerNode];
    int m_slotOffset[kSlotsPerNode];
    // Scans of nodes at the rim of the grid look past it, where every state reads as free.
    const std::size_t m_margin;
    const Zeroed<std::uint8_t> m_stateStore;
    std::uint8_t* const m_state;    // node 0's entry of the store
    Zeroed<std::uint32_t> m_marks;  // stage and distance, see distance()
    std::uint32_t m_stage = 0;
    Queue m_active;
    Queue m_orphans;
    Path m_sinkPath;
    Path m_sourcePath;
};
