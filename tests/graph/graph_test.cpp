// What a graph stores, and the cheapest cut of it.
#include <gtest/gtest.h>
#include <limits>

#include "graph/block_view.h"
#include "graph/grid.h"
#include "support/fake_clock.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

void expectCut(Grid grid, const std::vector<float>& source, const std::vector<float>& sink,
               float flow, const std::vector<int>& labels) {
    grid.source = source;
    grid.sink = sink;
    const auto graph = grid.build();
    EXPECT_EQ(graph->maxFlow(), flow);
    EXPECT_EQ(labelsOf(*graph), labels);
}

using MaxFlow = FlowTest;

}  // namespace

TEST(GraphStore, AddingGoesToEdgesBothWaysAndAccumulatesAtTerminals) {
    Grid grid(4, 3);
    grid.outside[2] = true;
    float next = 1.0F;
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = next++; });
    const auto graph = grid.build();
    for (const int other : grid.around(5)) {
        graph->addToEdge(5, other, 100.0F, 200.0F);
        grid.capacity(5, other) += 100.0F;
        grid.capacity(other, 5) += 200.0F;
    }
    graph->addToEdge(5, 7, 1.0F, 1.0F);
    graph->addToEdge(3, 4, 1.0F, 1.0F);  // next in number, but at the other end of a row
    graph->addToEdge(2, 1, 1.0F, 1.0F);  // a skipped node has no edges
    EXPECT_EQ(contentOf(*graph), contentOf(*grid.build()));
    graph->addtWeights(0, 1, 4);
    EXPECT_EQ(graph->m_nodes[0].residualTerminalCap, -3.0F);
    graph->addtWeights(0, 7, 2);
    EXPECT_EQ(graph->m_nodes[0].residualTerminalCap, 2.0F);
    EXPECT_EQ(graph->m_flow, 6.0F);  // 1, then 2 + 3 of 7
}

TEST(GraphStore, ResettingClearsAllThatWasAddedAlsoThroughAView) {
    Grid grid(3, 2, 1.0F);
    grid.source[0] = grid.sink[0] = grid.sink[5] = 9.0F;
    grid.outside[2] = true;
    for (const bool throughView : {false, true}) {
        const auto graph = grid.build();
        graph->maxFlow();
        const BlockViewPtr view = createBlockView(graph.get(), 0, 0, 1, 1);
        VORNSEGraph& cleared = throughView ? *view : *graph;
        graph->m_edgeCaps[17] = 7.0F;  // skipped, so not to be written
        cleared.resetNew();
        EXPECT_EQ(graph->m_edgeCaps[17], 7.0F);
        EXPECT_EQ(cleared.m_flow, 0.0F);
        std::vector<float> slots(48, 0.0F);
        std::fill_n(slots.begin() + 16, 8, kNoEdge);
        for (int slot = 0; slot < 48; ++slot) {
            EXPECT_EQ(cleared.capacityAt(slot), slots[static_cast<std::size_t>(slot)]) << slot;
        }
        EXPECT_EQ(graph->m_nodes[0].parentEdge, parent::kNone);
        EXPECT_EQ(graph->m_nodes[5].residualTerminalCap, 0.0F);
        cleared.reset();
        EXPECT_EQ(cleared.m_nodeCount + cleared.m_edgeCount, 0);
        // Edges are cleared without nodes, too.
        cleared.addEdge(0, 0, 5.0F, 6.0F, false);
        cleared.reset();
        EXPECT_EQ(graph->m_edgeCaps[0] + graph->m_edgeCaps[1], 0.0F);
        EXPECT_EQ(cleared.m_edgeLast, graph->m_edgeCaps);
    }
}

TEST_F(MaxFlow, CutsAsCheaplyAsTheLibrarysSolver) {
    std::mt19937 random(1);
    for (int round = 0; round < 500; ++round) {
        // Whole capacities from mostly empty and tied to widely spread, then fractions; some rounds
        // with infinite terminals in two corners, which bind like very large ones.
        const unsigned range = 2 + static_cast<unsigned>(round) % 10;
        const bool whole = range < 11;
        const auto upTo6 = [&random] { return 1 + static_cast<int>(random() % 6); };
        Grid grid = randomGrid(random, upTo6(), upTo6(), [&] {
            return whole ? static_cast<float>(random() % range)
                         : static_cast<float>(random()) * 1e-9F;
        });
        Grid infinite = grid;
        if (round % 4 == 0 && grid.size() > 1) {
            grid.source.front() = grid.sink.back() = 1e6F;
            grid.sink.front() = grid.source.back() = 0.0F;
            infinite = grid;
            infinite.source.front() = infinite.sink.back() = kInfinity;
        }
        const auto graph = infinite.build();
        const double expected = libraryMaxFlow(grid);
        const double tolerance = whole ? 0.0 : 1e-4;
        ASSERT_NEAR(static_cast<double>(graph->maxFlow()), expected, tolerance) << round;
        ASSERT_NEAR(grid.cutWeight(*graph), expected, tolerance) << round;
        for (const nodes* node = graph->m_nodes; node < graph->m_nodeLast; ++node) {
            ASSERT_TRUE(node->nextActive == nullptr && node->nextOrphan == nullptr) << round;
        }
    }
}

TEST_F(MaxFlow, SmallRowsByHand) {
    // Equal edges saturate together: what lies between them is free.
    expectCut(Grid(4, 1, 1.0F), {5, 0, 0, 0}, {0, 0, 0, 5}, 1.0F, {0, 2, 2, 1});
    // -0.0 is no capacity.
    expectCut(Grid(3, 1, -0.0F), {1, 0, 0}, {0, 0, 1}, 0.0F, {0, 2, 1});
    // A node torn by two infinities is no number and so free; it falls to the wider edge.
    Grid torn(3, 1, 3.0F);
    torn.capacity(1, 2) = 2.0F;
    expectCut(torn, {kInfinity, kInfinity, 0}, {0, kInfinity, kInfinity}, kInfinity, {0, 0, 1});
    // Cancelled before the start: the roots only, and what the terminals had in common.
    VORNSEMarker::m_exitApp = true;
    expectCut(Grid(4, 1, 1.0F), {5, 0, 0, 1}, {2, 0, 0, 4}, 3.0F, {0, 2, 2, 1});
}

TEST_F(MaxFlow, StopsAtTheFirstScanThatEndsAfterTenSeconds) {
    Grid grid(64, 1, 1.0F);
    grid.source[0] = 1.0F;
    const FakeClock clock(0);
    CpuTimer timer{};
    g_cancelTimer = &timer;
    for (const int threads : {0, 4}) {
        for (const bool late : {false, true}) {
            FakeClock::set(late ? 10000001 : 10000000);
            const auto graph = grid.build(threads);
            graph->maxFlow();
            std::vector<int> labels(64, tree::kFree);
            std::fill_n(labels.begin(), late ? 2 : 64, tree::kSource);
            EXPECT_EQ(labelsOf(*graph), labels);
            EXPECT_EQ(VORNSEMarker::m_exitApp.exchange(false), late);
            EXPECT_EQ(timer.m_endMicros, late ? 10000001.0 : 10000000.0);
        }
    }
    timer = {{1, 5}, {3, 0}, 0.0, 0.0, 1};  // stopped
    grid.build()->maxFlow();
    EXPECT_EQ(timer.m_endMicros - timer.m_startMicros, 1999995.0);
}
