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

// The middle node of a 3 x 3 grid is an orphan of one tree, its neighbours are roots of the same.
class Adoption : public testing::TestWithParam<int> {
  protected:
    Adoption() {
        Grid grid(3, 3, 1.0F);
        auto& terminals = GetParam() == tree::kSource ? grid.source : grid.sink;
        terminals = {1, 1, 1, 1, 0, 1, 1, 1, 1};
        graph = grid.build();
        graph->maxflowInit();
        while (nodes* queued = graph->GetTopActiveQueueNode()) {
            queued->nextActive = nullptr;
        }
        graph->outgoingSlots(4, slots);
        join(4, parent::kNone);
    }
    void adopt() {
        GetParam() == tree::kSource ? graph->ProcessSourceOrphans(&orphan())
                                    : graph->ProcessSinkOrphans(&orphan());
    }
    void setNeighboursFree() {
        for (const int slot : slots) {
            graph->m_nodes[graph->headOf(slot)].treeLabel = tree::kFree;
        }
    }
    void join(int node, int parentEdge) {
        graph->m_nodes[node].treeLabel = GetParam();
        graph->m_nodes[node].parentEdge = parentEdge;
    }
    nodes& orphan() { return graph->m_nodes[4]; }
    // The capacity on which flow would pass between the orphan and a parent over `slot`.
    float& useful(int slot) { return graph->m_edgeCaps[GetParam() == 0 ? slot ^ 1 : slot]; }

    std::unique_ptr<VORNSEGraph> graph;
    int slots[8];  // of the orphan
};

}  // namespace

TEST_F(MaxFlow, CutsAsCheaplyAsATextbookSolver) {
    std::mt19937 random(1);
    for (int round = 0; round < 500; ++round) {
        // Whole capacities from mostly empty and tied to widely spread, then fractions; some rounds
        // with infinite terminals in two corners, which bind like very large ones.
        const unsigned range = 2 + static_cast<unsigned>(round) % 10;
        const bool whole = range < 11;
        Grid grid = randomGrid(random, 6, [&] {
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
        const double expected = textbookMaxFlow(grid);
        const double tolerance = whole ? 0.0 : 1e-4;
        ASSERT_NEAR(static_cast<double>(graph->maxFlow()), expected, tolerance) << round;
        ASSERT_NEAR(grid.cutWeight(*graph), expected, tolerance) << round;
        for (const nodes* node = graph->m_nodes; node < graph->m_nodeLast; ++node) {
            ASSERT_TRUE(node->nextActive == nullptr && node->nextOrphan == nullptr) << round;
        }
    }
}

TEST_F(MaxFlow, SmallRowsByHand) {
    // Source and sink meet in terminal weights only: every node stays free.
    expectCut(Grid(5, 1, 1.0F), {0, 2, 0, 3, 0}, {0, 2, 0, 3, 0}, 5.0F, {2, 2, 2, 2, 2});
    // A path that saturates from end to end leaves free nodes.
    expectCut(Grid(3, 1, 1.0F), {1, 0, 0}, {0, 0, 1}, 1.0F, {2, 2, 2});
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
    for (const bool late : {false, true}) {
        FakeClock::set(late ? 10000001 : 10000000);
        const auto graph = grid.build();
        graph->maxFlow();
        std::vector<int> labels(64, tree::kFree);
        std::fill_n(labels.begin(), late ? 2 : 64, tree::kSource);
        EXPECT_EQ(labelsOf(*graph), labels);
        EXPECT_EQ(VORNSEMarker::m_exitApp, late);
    }
}

TEST_P(Adoption, TheEarliestOfEqualParentsInScanOrderWins) {
    for (const int slot : slots) {
        adopt();
        EXPECT_EQ(orphan().parentEdge, slot);
        EXPECT_EQ(orphan().treeLabel, GetParam());
        useful(slot) = slot % 3 == 0 ? -0.0F : 0.0F;  // out of the running, whatever its sign
        join(4, parent::kNone);
    }
    adopt();
    EXPECT_EQ(orphan().treeLabel, tree::kFree);
    EXPECT_EQ(graph->m_activeHead, nullptr);
}

TEST_P(Adoption, TheNearestRootWinsAndOwnDescendantsAreNoParents) {
    setNeighboursFree();
    // Left hangs on the orphan itself, up-left on left, up on up-left.
    join(3, slots[0] ^ 1);
    join(0, 8 * 3 + 5);
    join(1, 8 * 1);
    // Down is a root; down-right, earlier in the scan, is its child.
    join(7, parent::kTerminal);
    join(8, 8 * 8);
    adopt();
    EXPECT_EQ(orphan().parentEdge, slots[6]);
    join(4, parent::kNone);
    useful(slots[6]) = 0.0F;
    adopt();
    EXPECT_EQ(orphan().parentEdge, slots[5]);
}

TEST_P(Adoption, AFreedOrphanWakesItsNeighboursAndOrphansItsChildren) {
    setNeighboursFree();
    // Left and right are children; only from the right could the orphan be claimed again.
    join(3, slots[0] ^ 1);
    join(5, slots[4] ^ 1);
    useful(slots[0]) = 0.0F;
    graph->m_nodes[1].treeLabel = 1 - GetParam();  // the other tree is left alone
    adopt();
    EXPECT_EQ(orphan().treeLabel, tree::kFree);
    EXPECT_EQ(orphan().parentEdge, parent::kNone);
    EXPECT_EQ(graph->GetTopActiveQueueNode(), graph->m_nodes + 5);
    EXPECT_EQ(graph->GetTopActiveQueueNode(), nullptr);
    EXPECT_EQ(graph->GetTopOrphanQueueNode(), graph->m_nodes + 3);
    EXPECT_EQ(graph->GetTopOrphanQueueNode(), graph->m_nodes + 5);
    EXPECT_EQ(graph->GetTopOrphanQueueNode(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(BothTrees, Adoption, testing::Values(tree::kSource, tree::kSink));
