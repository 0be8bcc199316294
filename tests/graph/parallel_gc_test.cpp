#include "graph/parallel_gc.h"

#include <gtest/gtest.h>

#include "graph/grid.h"
#include "support/injected_faults.h"
#include "support/log_capture.h"

namespace {

constexpr int kCounts[] = {1, 2, 3, 4, 5, 6, 8, 9, 12};

class ParallelCut : public FlowTest {
  protected:
    // The solvers poll a running timer, as they do in a request.
    ParallelCut() {
        g_cancelTimer = &timer;
        start_cpu_timer(g_cancelTimer);
        clearLog();
    }

    CpuTimer timer{};
};

// Every node has a terminal; limit(n) gives the capacities from 0 to n.
template <typename Limit>
Grid gridOf(int width, int height, Limit limit) {
    Grid grid(width, height);
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = limit(3); });
    for (std::size_t node = 0; node < grid.source.size(); ++node) {
        const bool toSource = limit(1) > 0.5F;
        (toSource ? grid.source : grid.sink)[node] = limit(11);
    }
    return grid;
}

// Few whole capacities, so that weights are exact and many edges saturate at once.
Grid tiedGrid(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    return gridOf(width, height,
                  [&](unsigned limit) { return static_cast<float>(random() % (limit + 1)); });
}

Grid spreadGrid(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    return gridOf(width, height, [&](unsigned limit) {
        return static_cast<float>(limit) * static_cast<float>(random()) / 4294967296.0F;
    });
}

}  // namespace

TEST_F(ParallelCut, BlocksFormTheGridOfTheirCount) {
    const int grids[][3] = {{1, 1, 1}, {2, 2, 1}, {3, 3, 1},  {4, 2, 2}, {6, 3, 2},
                            {8, 4, 2}, {9, 3, 3}, {12, 4, 3}, {7, 1, 7}, {0, 1, 1}};
    const auto graph = Grid(10, 7).build();
    for (const auto& [count, across, down] : grids) {
        const ParallelGC solver(graph.get(), count);
        EXPECT_EQ(std::pair(solver.m_blocksX, solver.m_blocksY), std::pair(across, down)) << count;
        EXPECT_EQ(solver.m_blockWidth, (10 + across - 1) / across);
        EXPECT_EQ(solver.m_blockHeight, (7 + down - 1) / down);
    }
}

TEST_F(ParallelCut, WeighsNoMoreThanTheTextbookCut) {
    const int sizes[][2] = {{13, 11}, {29, 17}, {24, 24}, {1, 31}, {37, 1}, {5, 2}, {2, 5}, {1, 1}};
    for (const auto& [width, height] : sizes) {
        for (unsigned seed = 0; seed < 4; ++seed) {
            Grid grid = tiedGrid(width, height, seed);
            const double minimum = textbookMaxFlow(grid);
            for (const int count : kCounts) {
                const auto graph = grid.build(count);
                ParallelGC solver(graph.get(), count);
                start_cpu_timer(g_cancelTimer);
                EXPECT_EQ(solver.maxFlow(), 0.0F);
                EXPECT_EQ(grid.cutWeight(*graph), minimum) << width << ' ' << seed << ' ' << count;
                EXPECT_TRUE(solver.m_pairList.empty());
                // Every edge is back: none of those inside the grid reads as missing.
                for (int slot = 0; slot < graph->m_edgeCount; slot += 2) {
                    const auto direction = static_cast<std::size_t>(slot % 8 / 2);
                    EXPECT_EQ(graph->m_edgeCaps[slot] == kNoEdge,
                              grid.around(slot / 8)[direction] < 0);
                }
            }
        }
    }
}

TEST_F(ParallelCut, OfALargeGridWeighsWhatTheSerialSearchLetsFlow) {
    for (unsigned seed = 0; seed < 3; ++seed) {
        Grid grid = spreadGrid(90, 60, seed);
        start_cpu_timer(g_cancelTimer);
        const auto flow = static_cast<double>(grid.build()->maxFlow());  // a sum of floats
        for (const int count : kCounts) {
            const auto graph = grid.build(count);
            start_cpu_timer(g_cancelTimer);
            ParallelGC(graph.get(), count).maxFlow();
            EXPECT_NEAR(grid.cutWeight(*graph), flow, 2e-5 * flow) << seed << ' ' << count;
        }
    }
}

TEST_F(ParallelCut, IsTheSameEveryTimeAlsoWhenThreadsCannotBeStarted) {
    Grid grid = tiedGrid(40, 30, 1);
    const auto solve = [&grid] {
        const auto graph = grid.build(9);
        EXPECT_EQ(graph->maxFlow(), 0.0F);
        std::vector<int> cut;
        for (int node = 0; node < graph->m_nodeCount; ++node) {
            cut.push_back(graph->getTreeofNode(node));
        }
        return cut;
    };
    const std::vector<int> cut = solve();
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(solve(), cut);
    }
    EXPECT_TRUE(takeErrors().empty());
    // Nine threads each for numbering, partition and block solve, eight for merging.
    for (const int available : {0, 3, 14, 34}) {
        armFault(Fault::kThread, available + 1, true);
        EXPECT_EQ(solve(), cut);
        disarmFault();
        EXPECT_EQ(takeErrors().size(), static_cast<std::size_t>(35 - available));
    }
}

TEST_F(ParallelCut, PartsThatNothingConnectsAreCutByThemselves) {
    Grid grid = tiedGrid(12, 9, 5);
    Grid apart = grid;
    apart.forEachEdge([&](int from, int to) {
        if ((from % 12 < 6) != (to % 12 < 6)) {
            apart.capacity(from, to) = kNoEdge;
            grid.capacity(from, to) = 0.0F;
        }
    });
    const auto graph = apart.build(4);
    graph->maxFlow();
    EXPECT_EQ(grid.cutWeight(*graph), textbookMaxFlow(grid));
}

TEST_F(ParallelCut, CancelledItStillPutsEveryEdgeBack) {
    const Grid grid = tiedGrid(12, 9, 7);
    const auto graph = grid.build(6);
    const std::vector<float> before = capacitiesOf(*graph);
    VORNSEMarker::m_exitApp = true;
    graph->maxFlow();
    EXPECT_EQ(capacitiesOf(*graph), before);
}
