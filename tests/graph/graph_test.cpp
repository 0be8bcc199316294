#include "graph/graph.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

#include "graph/grid.h"

namespace {

// Numbers every directed edge of a grid differently.
Grid numbered(int width, int height) {
    Grid grid(width, height);
    float next = 1.0F;
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = next++; });
    return grid;
}

std::vector<int> around(int node, int width, int height) {
    std::vector<int> heads;
    const int offsets[8][2] = {{-1, 0}, {-1, -1}, {0, -1}, {1, -1},
                               {1, 0},  {1, 1},   {0, 1},  {-1, 1}};
    for (const auto& offset : offsets) {
        const int x = node % width + offset[0];
        const int y = node / width + offset[1];
        const bool inside = x >= 0 && x < width && y >= 0 && y < height;
        heads.push_back(inside ? y * width + x : -1);
    }
    return heads;
}

}  // namespace

TEST(GraphStore, SlotsLeadToTheNeighboursInScanOrderAndHoldTheirCapacity) {
    for (const auto& [width, height] : {std::pair{4, 3}, {2, 2}, {6, 1}, {1, 5}, {1, 1}}) {
        Grid grid = numbered(width, height);
        const auto graph = grid.build();
        EXPECT_EQ(graph->m_nodeCount, width * height);
        EXPECT_EQ(graph->m_edgeCount, width * height * 8);
        for (int node = 0; node < grid.size(); ++node) {
            int slots[8];
            graph->outgoingSlots(node, slots);
            const std::vector<int> heads = around(node, width, height);
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

TEST(GraphStore, AbsentEdgesAndTheFixedSlotNumbers) {
    const auto graph = numbered(3, 3).build();
    for (const int slot : {0, 1, 2, 3, 4, 5, 6, 7, 8 + 2, 8 + 4, 8 + 6, 24, 26, 8 * 5 + 6}) {
        EXPECT_EQ(graph->m_edgeCaps[slot], -2.0F) << slot;
    }
    int slots[8];
    graph->outgoingSlots(4, slots);
    EXPECT_EQ(std::vector<int>(slots, slots + 8),
              (std::vector<int>{32, 34, 36, 38, 41, 67, 61, 55}));
}

TEST(GraphStore, AddToEdgeAddsBothWaysBetweenNeighboursOnly) {
    Grid grid = numbered(4, 3);
    const auto graph = grid.build();
    for (const int other : around(5, 4, 3)) {
        graph->addToEdge(5, other, 100.0F, 200.0F);
        grid.capacity(5, other) += 100.0F;
        grid.capacity(other, 5) += 200.0F;
    }
    graph->addToEdge(5, 7, 1.0F, 1.0F);
    graph->addToEdge(3, 4, 1.0F, 1.0F);  // next in number, but at the other end of a row
    graph->addToEdge(5, 5, 1.0F, 1.0F);
    const auto expected = grid.build();
    EXPECT_EQ(std::vector<float>(graph->m_edgeCaps, graph->m_edgeLast),
              std::vector<float>(expected->m_edgeCaps, expected->m_edgeLast));
}

TEST(GraphStore, TerminalWeightsAccumulate) {
    const auto graph = Grid(4, 1).build();
    graph->addtWeights(0, 5.0F, 3.0F);
    EXPECT_EQ(graph->m_flow, 3.0F);
    graph->addtWeights(0, 5.0F, 3.0F);
    EXPECT_EQ(graph->m_nodes[0].residualTerminalCap, 4.0F);
    EXPECT_EQ(graph->m_flow, 6.0F);
    graph->addtWeights(1, 2.0F, 2.0F);
    EXPECT_EQ(graph->m_nodes[1].residualTerminalCap, 0.0F);
    EXPECT_EQ(graph->m_flow, 8.0F);
    graph->addtWeights(2, 1.0F, 4.0F);  // -3, then 7 against 3 + 2
    graph->addtWeights(2, 7.0F, 2.0F);
    EXPECT_EQ(graph->m_nodes[2].residualTerminalCap, 2.0F);
    EXPECT_EQ(graph->m_flow, 14.0F);
}

TEST(GraphStore, ResetNewKeepsTheSizeAndResetStartsAfresh) {
    Grid grid = numbered(3, 2);
    grid.source = {9, 9, 0, 0, 0, 0};
    grid.sink = {0, 0, 0, 0, 9, 9};
    const auto graph = grid.build();
    const float flow = graph->maxFlow();
    EXPECT_EQ(graph->resetNew(), 0);
    EXPECT_EQ(graph->m_nodeCount, 6);
    EXPECT_EQ(graph->m_edgeCount, 48);
    EXPECT_EQ(graph->m_flow, 0.0F);
    EXPECT_EQ(std::vector<float>(graph->m_edgeCaps, graph->m_edgeLast),
              std::vector<float>(48, 0.0F));
    for (int node = 0; node < 6; ++node) {
        EXPECT_EQ(graph->m_nodes[node].parentEdge, -3);
        EXPECT_EQ(graph->m_nodes[node].treeLabel, 2);
        EXPECT_EQ(graph->m_nodes[node].residualTerminalCap, 0.0F);
        EXPECT_EQ(graph->getTreeofNode(node), 0);
        const auto n = static_cast<std::size_t>(node);
        graph->addtWeights(node, grid.source[n], grid.sink[n]);
        for (int d = 0; d < 4; ++d) {
            if (const int other = grid.earlier(node, d); other >= 0) {
                graph->addToEdge(node, other, grid.capacity(node, other),
                                 grid.capacity(other, node));
            }
        }
    }
    EXPECT_EQ(graph->maxFlow(), flow);
    graph->reset();
    EXPECT_EQ(graph->m_nodeCount, 0);
    EXPECT_EQ(graph->m_edgeCount, 0);
    EXPECT_EQ(graph->m_nodeLast, graph->m_nodes);
    EXPECT_EQ(graph->m_edgeLast, graph->m_edgeCaps);
}

TEST(GraphStore, ArraysAreSizedGenerouslyAndABlockViewSharesThem) {
    VORNSEGraph graph(3, 24, 3, 1, 2);
    EXPECT_EQ(graph.m_nodeMax - graph.m_nodes, 16);
    EXPECT_EQ(graph.m_edgeMax - graph.m_edgeCaps, 48);
    graph.addNode(0);
    graph.addNode(3);
    graph.addtWeights(0, 2.0F, 1.0F);
    graph.AddToActiveQueue(graph.m_nodes);
    EXPECT_EQ(graph.m_nodeLast - graph.m_nodes, 3);
    // A view owns nothing, so it is never destroyed.
    alignas(VORNSEGraph) unsigned char room[sizeof(VORNSEGraph)];
    const auto* view = new (room) VORNSEGraph(&graph, 1, 2, 30, 40);
    EXPECT_EQ(view->m_nodes, graph.m_nodes);
    EXPECT_EQ(view->m_nodeLast, graph.m_nodeLast);
    EXPECT_EQ(view->m_edgeCaps, graph.m_edgeCaps);
    EXPECT_EQ(view->m_nodeCount, 3);
    EXPECT_EQ(view->m_flow, 1.0F);
    EXPECT_EQ(view->m_activeHead, nullptr);
    EXPECT_EQ(view->m_width, 3);
    EXPECT_EQ(view->m_height, 1);
    EXPECT_EQ((std::vector<int>{view->m_blockRow, view->m_blockCol, view->m_blockWidth,
                                view->m_blockHeight}),
              (std::vector<int>{1, 2, 30, 40}));
    EXPECT_EQ(std::memcmp(view->m_neighbourOffset, graph.m_neighbourOffset, 8 * sizeof(int)), 0);
}
