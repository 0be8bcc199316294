#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "graph/grid.h"
#include "support/fake_clock.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<int> labelsOf(const VORNSEGraph& graph) {
    std::vector<int> labels;
    for (const nodes* node = graph.m_nodes; node < graph.m_nodeLast; ++node) {
        labels.push_back(node->treeLabel);
    }
    return labels;
}

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
