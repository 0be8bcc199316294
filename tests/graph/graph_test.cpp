#include "graph/graph.h"

#include <gtest/gtest.h>

#include "graph/grid.h"

namespace {

// Numbers every directed edge of a grid differently.
Grid numbered(int width, int height) {
    Grid grid(width, height);
    float next = 1.0F;
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = next++; });
    return grid;
}

}  // namespace

TEST(GraphStore, SlotsLeadToTheNeighboursInScanOrderAndHoldTheirCapacity) {
    for (const auto& [width, height] : {std::pair{4, 3}, {2, 2}, {6, 1}, {1, 5}, {1, 1}}) {
        Grid grid = numbered(width, height);
        const auto graph = grid.build();
        EXPECT_EQ(graph->m_nodeCount, width * height);
        EXPECT_EQ(graph->m_edgeCount, width * height * 8);
        for (int node = 0; node < grid.size(); ++node) {
            EXPECT_EQ(graph->m_edgeCaps[8 * node + 4] == -2.0F, node < width);  // marked absent
            int slots[8];
            graph->outgoingSlots(node, slots);
            const auto heads = grid.around(node);
            for (std::size_t i = 0; i < 8; ++i) {
                if (heads[i] < 0) {
                    EXPECT_EQ(slots[i], kOutside) << width << 'x' << height << ' ' << node;
                    continue;
                }
                EXPECT_EQ(graph->headOf(slots[i]), heads[i]);
                EXPECT_EQ(graph->headOf(slots[i] ^ 1), node);
                EXPECT_EQ(graph->m_edgeCaps[slots[i]], grid.capacity(node, heads[i]));
            }
        }
    }
}

TEST(GraphStore, AddToEdgeAddsBothWaysBetweenNeighboursOnly) {
    Grid grid = numbered(4, 3);
    const auto graph = grid.build();
    for (const int other : grid.around(5)) {
        graph->addToEdge(5, other, 100.0F, 200.0F);
        grid.capacity(5, other) += 100.0F;
        grid.capacity(other, 5) += 200.0F;
    }
    graph->addToEdge(5, 7, 1.0F, 1.0F);
    graph->addToEdge(3, 4, 1.0F, 1.0F);  // next in number, but at the other end of a row
    EXPECT_EQ(capacitiesOf(*graph), capacitiesOf(*grid.build()));
}

TEST(GraphStore, TerminalWeightsAccumulate) {
    const auto graph = Grid(4, 1).build();
    const auto expectAfter = [&](int node, float source, float sink, float residual, float flow) {
        graph->addtWeights(node, source, sink);
        EXPECT_EQ(graph->m_nodes[node].residualTerminalCap, residual);
        EXPECT_EQ(graph->m_flow, flow);
    };
    expectAfter(0, 5, 3, 2, 3);
    expectAfter(0, 5, 3, 4, 6);
    expectAfter(1, 2, 2, 0, 8);
    expectAfter(2, 1, 4, -3, 9);
    expectAfter(2, 7, 2, 2, 14);  // 7 against 2 + 3
}

TEST(GraphStore, ResetNewKeepsTheSizeAndResetStartsAfresh) {
    Grid grid = numbered(3, 2);
    grid.source = {9, 9, 0, 0, 0, 0};
    grid.sink = {0, 0, 0, 0, 9, 9};
    const auto graph = grid.build();
    const float flow = graph->maxFlow();
    EXPECT_EQ(graph->resetNew(), 0);
    EXPECT_EQ(graph->m_nodeCount, 6);
    EXPECT_EQ(graph->m_flow, 0.0F);
    EXPECT_EQ(capacitiesOf(*graph), std::vector<float>(48, 0.0F));
    for (int node = 0; node < 6; ++node) {
        EXPECT_EQ(graph->m_nodes[node].parentEdge, -3);
        EXPECT_EQ(graph->m_nodes[node].treeLabel, 2);
        EXPECT_EQ(graph->getTreeofNode(node), 0);
        const auto n = static_cast<std::size_t>(node);
        graph->addtWeights(node, grid.source[n], grid.sink[n]);
    }
    grid.forEachEdge(
        [&](int from, int to) { graph->addToEdge(from, to, grid.capacity(from, to), 0.0F); });
    EXPECT_EQ(graph->maxFlow(), flow);
    graph->reset();
    EXPECT_EQ(graph->m_nodeCount + graph->m_edgeCount, 0);
    EXPECT_EQ(graph->m_nodeLast, graph->m_nodes);
    EXPECT_EQ(graph->m_edgeLast, graph->m_edgeCaps);
}
