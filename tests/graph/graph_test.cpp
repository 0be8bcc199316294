#include "graph/graph.h"

#include <gtest/gtest.h>

#include "graph/block_view.h"
#include "graph/grid.h"

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
