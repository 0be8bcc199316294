#include <gtest/gtest.h>

#include "graph/grid.h"
#include "graph/parallel_gc.h"
#include "support/injected_faults.h"
#include "support/log_capture.h"

namespace {

constexpr int kCounts[] = {1, 2, 3, 4, 5, 6, 8, 9, 12};

using ParallelCut = FlowTest;

// Few whole capacities, so that weights are exact and many edges saturate at once.
Grid tiedGrid(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    const auto upTo = [&](unsigned most) { return static_cast<float>(random() % (most + 1)); };
    Grid grid(width, height);
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = upTo(3); });
    for (std::size_t node = 0; node < grid.source.size(); ++node) {
        (upTo(1) > 0.5F ? grid.source : grid.sink)[node] = upTo(11);
    }
    return grid;
}

}  // namespace

TEST_F(ParallelCut, BlocksFormTheGridOfTheirCount) {
    const int grids[][3] = {{2, 2, 1}, {3, 3, 1},  {4, 2, 2}, {6, 3, 2}, {8, 4, 2},
                            {9, 3, 3}, {12, 4, 3}, {7, 1, 7}, {0, 1, 1}};
    const auto graph = Grid(10, 7).build();
    for (const auto& [count, across, down] : grids) {
        const ParallelGC solver(graph.get(), count);
        EXPECT_EQ(std::pair(solver.m_blocksX, solver.m_blocksY), std::pair(across, down)) << count;
    }
}

TEST_F(ParallelCut, WeighsNoMoreThanTheLibrarysCut) {
    const int sizes[][2] = {{13, 11}, {29, 17}, {24, 24}, {1, 31}, {37, 1}, {5, 2}, {2, 5}, {1, 1}};
    std::mt19937 random(5);
    for (const auto& [width, height] : sizes) {
        for (unsigned seed = 0; seed < 6; ++seed) {
            const bool whole = seed < 4;
            Grid grid = whole ? tiedGrid(width, height, seed)
                              : randomGrid(random, width, height,
                                           [&] { return static_cast<float>(random()) * 1e-9F; });
            const double minimum = libraryMaxFlow(grid);
            for (const int count : kCounts) {
                const auto graph = grid.build(count);
                ParallelGC solver(graph.get(), count);
                EXPECT_EQ(solver.maxFlow(), 0.0F);
                EXPECT_NEAR(grid.cutWeight(*graph), minimum, whole ? 0.0 : 1e-4 * minimum)
                    << width << ' ' << seed << ' ' << count;
                EXPECT_TRUE(solver.m_pairList.empty());
            }
        }
    }
}

TEST_F(ParallelCut, IsTheSameEveryTimeAlsoWhenThreadsCannotBeStarted) {
    Grid grid = tiedGrid(40, 30, 1);
    clearLog();
    const auto solve = [&grid] {
        const auto graph = grid.build(9);
        EXPECT_EQ(graph->maxFlow(), 0.0F);
        return labelsOf(*graph);
    };
    const std::vector<int> cut = solve();
    EXPECT_EQ(solve(), cut);
    EXPECT_TRUE(takeErrors().empty());
    // Nine threads each for numbering, partition and block solve, eight for merging.
    for (const int available : {0, 3, 14, 34}) {
        armFault(Fault::kThread, available + 1, true);
        EXPECT_EQ(solve(), cut);
        disarmFault();
        EXPECT_EQ(takeErrors().size(), static_cast<std::size_t>(35 - available));
    }
}

TEST_F(ParallelCut, EdgesThatJoinAPairWithoutEdgesAreDropped) {
    // Four blocks of 2 x 2, each beside the three others.
    const auto graph = Grid(4, 4, 1.0F).build();
    ParallelGC solver(graph.get(), 4);
    for (const auto step : {&ParallelGC::AssignIDs, &ParallelGC::PartitionGraph}) {
        for (int block = 0; block < 4; ++block) {
            (solver.*step)(block / 2, block % 2);
        }
    }
    ASSERT_EQ(solver.m_pairList.size(), 6U);
    solver.MergeBlocks(0, 2);
    solver.MakeNeighbourChanges(0, 1);
    EXPECT_EQ(solver.m_pairMatrix[0][2]->head, nullptr);
    EXPECT_EQ(solver.m_pairMatrix[1][2], nullptr);
    EXPECT_EQ(solver.m_pairList.size(), 3U);
    int slots[8];
    graph->outgoingSlots(6, slots);
    EXPECT_EQ(graph->m_edgeCaps[slots[7]], kNoEdge);  // from block 1 to block 2
    // Below the merged blocks: two edges down and three across.
    int edges = 0;
    for (const cutEdge* edge = solver.m_pairMatrix[0][3]->head; edge != nullptr;
         edge = edge->next) {
        ++edges;
    }
    EXPECT_EQ(edges, 5);
}
