// The search of max_flow.cpp on a denser store, for whole graphs: three bytes a node in tiles instead
// of its record and its capacities in rows, paths remembered while they are walked, distances
// remembered while they hold. Queues, scans and roundings come in the same order, so the result is
// the same bit for bit.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "graph/graph.h"
#include "graph/tiled_grid.h"

class TwoTreeSolver {
  public:
    // `graph` is initialised (VORNSEGraph::maxflowInit) and outlives the solver.
    explicit TwoTreeSolver(VORNSEGraph& graph);

    // False without memory, for a graph that is not completely built, and for one so narrow that its
    // tiles would be mostly empty.
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
        float smallest = 0.0F;  // capacity on the way
        int root = 0;
        int rootCell = 0;
    };

    // A distance that was walked, see distance(). The few that a stage walks share a table that
    // stays in the first-level cache; one that another displaces is walked again.
    struct Known {
        int node;
        std::uint32_t mark;  // stage and distance
    };
    static constexpr int kKnownBits = 12;
    static std::size_t placeOf(int node) {
        const auto key = static_cast<std::uint32_t>(node);
        return (key ^ key >> kKnownBits) & ((1U << kKnownBits) - 1);
    }

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
    void importEdges(int cell, int node, int x, int y);
    void importRecords();
    void exportRecords();
    template <int kTree>
    bool growOrAugment(int node);
    void augment(int sourceEnd, int sinkEnd, int direction);
    template <int kTree>
    class Walk;
    void walkToRoots(int sourceEnd, int sourceCell, int sinkEnd, int sinkCell);
    template <int kTree>
    void pushFlow(const Path& path, float amount);
    void openOrClose(int node, int neighbour, int direction, const float* pair);
    void openOrCloseSlot(int node, int neighbour, int direction, int slot);
    void adoptOrphans();
    template <int kTree>
    void adopt(int node);
    int distance(int node, int limit);
    void startStage();
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
    std::array<Known, std::size_t{1} << kKnownBits> m_known;
    std::uint32_t m_stage = 0;
    Queue m_active;
    Queue m_orphans;
    Path m_sinkPath;
    Path m_sourcePath;
};
