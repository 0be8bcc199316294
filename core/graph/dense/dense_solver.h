// The search of max_flow.cpp on a denser store, for whole graphs: seven bytes a node in tiles instead
// of its record and its capacities in rows (and four where paths lie), and the paths of the last
// augmentation kept as far as they hold. Queues, scans and roundings come in the same order, so the
// result is the same bit for bit.
//
// A cell is a node's number in the graph, row by row, which its capacities and its record go by;
// everything else goes by the tiled number. Invariant: m_open tells of every edge inside the image
// whether it carries flow, so that scans of neighbours do not read capacities.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "graph/dense/kept_path.h"
#include "graph/dense/neighbour_states.h"
#include "graph/dense/node_state.h"
#include "graph/dense/tiled_grid.h"
#include "graph/graph.h"

class DenseSolver {
  public:
    // `graph` is initialised (VORNSEGraph::maxflowInit) and outlives the solver.
    explicit DenseSolver(VORNSEGraph& graph);

    // False without memory, for a graph that is not completely built, and for one so narrow that its
    // tiles would be mostly empty.
    bool canSolve() const;

    // Runs the search and writes trees and queues back into the graph's records, also when it is
    // stopped early. False, and nothing done, for a graph with capacities below 0 (absent edges
    // apart): on those the plain search looks at kNoEdge in one direction only. Throws std::bad_alloc
    // without memory.
    bool run();

  private:
    // First-in-first-out queue of node numbers.
    class Queue {
      public:
        bool empty() const { return m_count == 0; }
        void push(int node) {
            if (m_count == m_ring.size()) {
                grow();
            }
            m_ring[(m_head + m_count++) & m_mask] = node;
        }
        int pop() {
            const int node = m_ring[m_head];
            m_head = (m_head + 1) & m_mask;
            --m_count;
            return node;
        }

      private:
        void grow();

        std::vector<int> m_ring;  // a power of two long
        std::size_t m_mask = 0;   // which is one more than this
        std::size_t m_head = 0;
        std::size_t m_count = 0;
    };

    // The directions in which a node's edges carry flow, a bit each.
    struct Directions {
        std::uint8_t out;
        std::uint8_t in;
    };

    struct Free {
        void operator()(void* block) const;
    };
    template <typename T>
    using Zeroed = std::unique_ptr<T[], Free>;

    template <typename Visit>
    void forEachNode(Visit visit) const;
    bool importEdges(int cell, int node, int x, int y);
    bool importRecords();
    void exportRecords();
    template <int kTree>
    bool growOrAugment(int node);
    void augment(int sourceEnd, int sinkEnd, int direction);
    template <int kTree>
    class Walk;
    void walkToRoots(KeptPath::Place sourceEnd, KeptPath::Place sinkEnd);
    void takeOff(const KeptPath& path, int from, int to);
    template <int kTree>
    void pushFlow(KeptPath& path, float amount);
    void openOrClose(int node, int neighbour, int direction, float there, float back);
    void adoptOrphans();
    template <int kTree>
    void adopt(int node);
    template <int kTree>
    int nearest(int node, const NeighbourStates& near, unsigned candidates) const;
    template <int kTree>
    int distance(int node, int limit) const;
    void setParent(int node, int direction);
    void activate(int node);
    void makeOrphan(int node);
    int directionOf(int cell, int slot) const;
    bool fits() const;

    VORNSEGraph& m_graph;
    float* const m_caps;
    nodes* const m_records;
    const TiledGrid m_grid;
    int m_cellOffset[kSlotsPerNode];
    int m_slotOffset[kSlotsPerNode];
    Zeroed<std::uint8_t> m_state;
    Zeroed<Directions> m_open;
    Zeroed<int> m_parent;  // of a node whose parent is a neighbour: long walks need no table
    Zeroed<int> m_step;    // of a node on a laid path
    Queue m_active;
    Queue m_orphans;
    KeptPath m_sinkPath;
    KeptPath m_sourcePath;
};

inline void DenseSolver::activate(int node) {
    std::uint8_t& state = m_state[static_cast<std::size_t>(node)];
    if ((state & node_state::kActive) == 0) {
        state = static_cast<std::uint8_t>(state | node_state::kActive);
        m_active.push(node);
    }
}

inline void DenseSolver::setParent(int node, int direction) {
    std::uint8_t& state = m_state[static_cast<std::size_t>(node)];
    state = static_cast<std::uint8_t>(state | node_state::parentCode(direction));
    m_parent[static_cast<std::size_t>(node)] = node + m_grid.steps(node)[direction];
}

inline void DenseSolver::makeOrphan(int node) {
    std::uint8_t& state = m_state[static_cast<std::size_t>(node)];
    if ((state & node_state::kOnPath) != 0) {
        KeptPath& path =
            (state & node_state::kTreeMask) == node_state::kInSink ? m_sinkPath : m_sourcePath;
        path.orphaned(m_step[static_cast<std::size_t>(node)]);
    }
    if ((state & node_state::kParentMask) != node_state::kNoParent) {
        state = static_cast<std::uint8_t>(state & ~node_state::kParentMask);
        m_orphans.push(node);
    }
}
