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

TEST(GraphStore, SlotsLeadToTheNeighboursInScanOrder) {
    for (const auto& [width, height] : {std::pair{4, 3}, {2, 2}, {6, 1}, {1, 5}}) {
        const Grid grid(width, height);
        const auto graph = grid.build();
        for (int node = 0; node < grid.size(); ++node) {
            int slots[8];
            graph->outgoingSlots(node, slots);
            for (std::size_t i = 0; i < 8; ++i) {
                const int head = slots[i] == kOutside ? -1 : graph->headOf(slots[i]);
                EXPECT_EQ(head, grid.around(node)[i]) << width << ' ' << node << ' ' << i;
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
    graph->addtWeights(2, 1, 4);
    EXPECT_EQ(graph->m_nodes[2].residualTerminalCap, -3.0F);
    EXPECT_EQ(graph->m_flow, 1.0F);
    graph->addtWeights(2, 7, 2);
    EXPECT_EQ(graph->m_nodes[2].residualTerminalCap, 2.0F);
    EXPECT_EQ(graph->m_flow, 6.0F);  // 7 against 2 + 3
}

TEST(GraphStore, ResetNewKeepsTheSizeAndResetStartsAfresh) {
    Grid grid = numbered(3, 2);
    grid.source[0] = grid.sink[0] = grid.sink[5] = 9.0F;
    const auto graph = grid.build();
    graph->maxFlow();
    graph->resetNew();
    EXPECT_EQ(graph->m_nodeCount, 6);
    EXPECT_EQ(graph->m_flow, 0.0F);
    EXPECT_EQ(capacitiesOf(*graph), std::vector<float>(48, 0.0F));
    EXPECT_EQ(graph->m_nodes[5].residualTerminalCap, 0.0F);
    graph->reset();
    EXPECT_EQ(graph->m_nodeCount + graph->m_edgeCount, 0);
    EXPECT_TRUE(graph->m_nodeLast == graph->m_nodes && graph->m_edgeLast == graph->m_edgeCaps);
}
