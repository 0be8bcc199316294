// The search of max_flow.cpp on a denser store, for graphs that are searched whole. It owns seven
// bytes for each node, in tiles, where the plain search reads the records and capacities of the
// graph; four more are touched where paths lie. Queues, scans and roundings come in the same order
// as in the plain search, so the result is the same bit for bit.
//
// `node` is a number in the graph, which its records and capacities go by; `tiled` is a number in
// tiles (tiled_grid.h), which everything here goes by.
//
// Between two stages (a stage is the time from one augmentation to the next):
//
//  1. The open bits of a node tell which of its edges can carry flow, away from it and towards it.
//     Scans therefore read no capacities.
//  2. A node of a tree has a parent: the terminal, or a neighbour in the same tree over an edge
//     that can carry flow, from the parent in the source tree and to it in the sink tree. m_parent
//     tells the neighbour's number. Chains of parents end at the terminal. There are no orphans.
//  3. A node is marked active when it waits in the active queue, and then it waits there once.
//  4. The capacities of the edges of a kept path are on the path, all others in the graph.
//  5. A node that is marked as on a path is at step m_step of the path of its tree. The
//     steps before the path's first orphan and behind its last one are all marked, and each
//     leads to its parent.
//
// After a cancel in the middle of a stage orphans may be left (2), the others hold.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "graph/dense/kept_path.h"
#include "graph/dense/neighbour_states.h"
#include "graph/dense/node_state.h"
#include "graph/dense/tiled_array.h"
#include "graph/dense/tiled_grid.h"
#include "graph/graph.h"

class DenseSolver {
  public:
    // `graph` is initialised (VORNSEGraph::maxflowInit) and outlives the solver.
    explicit DenseSolver(VORNSEGraph& graph);

    // False without memory, for a graph that is not completely built, and for one so narrow that
    // most of its tiles would be empty.
    bool canSolve() const;

    // Runs the search and writes trees and queues back into the graph's records, also when it is
    // stopped early. False, with nothing done, when an edge has a capacity below 0: there the plain
    // search tells kNoEdge from a capacity of -2 by looking in one direction only. Throws
    // std::bad_alloc without memory.
    bool run();

  private:
    // First-in-first-out queue of tiled numbers.
    class Queue {
      public:
        bool empty() const { return m_count == 0; }
        std::size_t count() const { return m_count; }
        void push(int tiled) {
            if (m_count == m_ring.size()) {
                grow();
            }
            m_ring[(m_head + m_count++) & m_mask] = tiled;
        }
        int pop() {
            assert(!empty());
            const int tiled = m_ring[m_head];
            m_head = (m_head + 1) & m_mask;
            --m_count;
            return tiled;
        }

      private:
        void grow();

        std::vector<int> m_ring;  // its length is a power of two
        std::size_t m_mask = 0;   // that length less one
        std::size_t m_head = 0;
        std::size_t m_count = 0;
    };

    // The directions in which a node's edges can carry flow, bit d for direction d.
    struct OpenEdges {
        std::uint8_t out;
        std::uint8_t in;
    };

    // store.cpp
    bool fits() const;
    template <typename Visit>
    void forEachNode(Visit visit) const;
    bool importEdges(int node, int tiled, int x, int y);
    bool importRecords();
    void exportRecords();
    int directionOf(int node, int slot) const;

    // growth.cpp
    template <int kTree>
    bool growOrAugment(int tiled);
    void adoptOrphans();
    template <int kTree>
    void adopt(int tiled);
    template <int kTree>
    int nearest(int tiled, const NeighbourStates& near, unsigned candidates) const;
    template <int kTree>
    int distance(int tiled, int limit) const;

    // augmentation.cpp
    template <int kTree>
    class Walk;
    void augment(int sourceEnd, int sinkEnd, int direction);
    void walkToRoots(KeptPath::Place sourceEnd, KeptPath::Place sinkEnd);
    void takeOff(const KeptPath& path, int from, int to);
    template <int kTree>
    void pushFlow(KeptPath& path, float amount);
    void openOrClose(int tiled, int neighbour, int direction, float there, float back);

    // invariants.cpp
    bool invariantsHold();
    bool invariantsHoldAfterAugmentation();
    class Check;

    void setParent(int tiled, int direction);
    void activate(int tiled);
    void makeOrphan(int tiled);
    template <int kTree>
    const KeptPath& pathOf() const {
        return kTree == node_state::kInSink ? m_sinkPath : m_sourcePath;
    }

    VORNSEGraph& m_graph;
    float* const m_caps;
    nodes* const m_records;
    const TiledGrid m_grid;
    int m_nodeStep[direction::kCount];
    int m_slotStep[direction::kCount];
    TiledArray<std::uint8_t> m_state;
    TiledArray<OpenEdges> m_open;
    TiledArray<int> m_parent;  // of a node whose parent is a neighbour, for long walks
    TiledArray<int> m_step;    // of a node on a kept path
    Queue m_active;
    Queue m_orphans;
    KeptPath m_sinkPath;
    KeptPath m_sourcePath;

    // Of assertions alone
    unsigned m_augmentations = 0;
    int m_checks = 0;
    TiledArray<std::uint8_t> m_checked;
};

inline void DenseSolver::activate(int tiled) {
    std::uint8_t& state = m_state[tiled];
    if ((state & node_state::kActive) == 0) {
        node_state::set(state, node_state::kActive);
        m_active.push(tiled);
    }
}

inline void DenseSolver::setParent(int tiled, int direction) {
    assert((m_state[tiled] & node_state::kParentMask) == node_state::kNoParent);
    node_state::set(m_state[tiled], node_state::parentCode(direction));
    m_parent[tiled] = tiled + m_grid.steps(tiled)[direction];
}

inline void DenseSolver::makeOrphan(int tiled) {
    std::uint8_t& state = m_state[tiled];
    if ((state & node_state::kOnPath) != 0) {
        KeptPath& path =
            (state & node_state::kTreeMask) == node_state::kInSink ? m_sinkPath : m_sourcePath;
        path.orphaned(m_step[tiled]);
    }
    if ((state & node_state::kParentMask) != node_state::kNoParent) {
        node_state::clear(state, node_state::kParentMask);
        m_orphans.push(tiled);
    }
}

// Calls visit(node, tiled, x, y) for every node that takes part.
template <typename Visit>
void DenseSolver::forEachNode(Visit visit) const {
    const int width = m_graph.m_width;
    for (const NumberRange& range : m_graph.ranges()) {
        int x = range.first % width;
        int y = range.first / width;
        for (int node = range.first; node < range.last; ++node) {
            visit(node, m_grid.tiledAt(x, y), x, y);
            if (++x == width) {
                x = 0;
                ++y;
            }
        }
    }
}
