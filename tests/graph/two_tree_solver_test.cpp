// The dense search against the plain one on the graph's records, bit for bit.
#include <gtest/gtest.h>

#include <cstring>
#include <new>

#include "graph/grid.h"
#include "history/marker.h"
#include "support/fake_clock.h"
#include "support/timers.h"

namespace {

constexpr std::int64_t kSecond = 1000000;

// A view of one block that is the whole grid searches the records.
float plainSearch(VORNSEGraph& graph) {
    alignas(VORNSEGraph) unsigned char room[sizeof(VORNSEGraph)];
    auto* view = new (room) VORNSEGraph(&graph, 0, 0, graph.m_width, graph.m_height);
    view->InitBlock();
    return view->maxFlowSerialCall();
}

float denseSearch(VORNSEGraph& graph) {
    graph.m_flow = 0.0F;
    return graph.maxFlow();
}

void expectSame(const VORNSEGraph& dense, const VORNSEGraph& plain, int round) {
    ASSERT_EQ(std::memcmp(dense.m_edgeCaps, plain.m_edgeCaps,
                          static_cast<std::size_t>(plain.m_edgeCount) * sizeof(float)),
              0)
        << round;
    for (int node = 0; node < plain.m_nodeCount; ++node) {
        ASSERT_EQ(dense.m_nodes[node].parentEdge, plain.m_nodes[node].parentEdge) << round;
        ASSERT_EQ(dense.m_nodes[node].treeLabel, plain.m_nodes[node].treeLabel) << round;
        ASSERT_EQ(dense.m_nodes[node].residualTerminalCap, plain.m_nodes[node].residualTerminalCap)
            << round;
    }
}

Grid seededGrid(std::mt19937& random, int round) {
    // Few whole values make ties, fractions make roundings.
    return randomGrid(random, 24, [&, whole = round % 2 == 0] {
        return whole ? static_cast<float>(random() % 4) : static_cast<float>(random()) * 1e-9F;
    });
}

}  // namespace

TEST(DenseSearch, EndsWhereThePlainSearchEnds) {
    std::mt19937 random(9);
    for (int round = 0; round < 300; ++round) {
        const Grid grid = seededGrid(random, round);
        const auto dense = grid.build();
        const auto plain = grid.build();
        ASSERT_EQ(denseSearch(*dense), plainSearch(*plain)) << round;
        expectSame(*dense, *plain, round);
    }
}

TEST(DenseSearch, StopsWhereThePlainSearchStops) {
    std::mt19937 random(10);
    CpuTimer timer{};
    g_cancelTimer = &timer;
    const FakeClock clock(0, kSecond);
    for (int round = 0; round < 100; ++round) {
        const Grid grid = seededGrid(random, round);
        const auto dense = grid.build();
        const auto plain = grid.build();
        // The limit passes after some scans, at one second a reading. The dense search makes one
        // reading more, before its first scan.
        const auto start = static_cast<std::int64_t>(9 - random() % 40) * kSecond;
        VORNSEMarker::m_exitApp = false;
        FakeClock::set(start - kSecond);
        const float flow = denseSearch(*dense);
        const bool stopped = VORNSEMarker::m_exitApp.exchange(false);
        FakeClock::set(start);
        ASSERT_EQ(flow, plainSearch(*plain)) << round;
        ASSERT_EQ(VORNSEMarker::m_exitApp, stopped) << round;
        expectSame(*dense, *plain, round);
    }
    VORNSEMarker::m_exitApp = false;
    g_cancelTimer = nullptr;
}

TEST(DenseSearch, SkippedNodesTakeNoPart) {
    // Rows 1 and 2 of 4 take part; the others have no edges and no terminals.
    std::mt19937 random(11);
    for (int round = 0; round < 20; ++round) {
        Grid grid(6, 4);
        const auto takesPart = [](int node) { return node >= 6 && node < 18; };
        grid.forEachEdge([&](int from, int to) {
            if (takesPart(from) && takesPart(to)) {
                grid.capacity(from, to) = static_cast<float>(random() % 5);
            }
        });
        VORNSEGraph sparse(24, 24 * 8, 6, 4, 0);
        sparse.skipNodes(6);
        sparse.addNode(12);
        sparse.skipNodes(6);
        sparse.skipEdges(6);
        for (int node = 6; node < 18; ++node) {
            const auto n = static_cast<std::size_t>(node);
            grid.source[n] = static_cast<float>(random() % 9);
            grid.sink[n] = static_cast<float>(random() % 9);
            for (std::size_t d = 0; d < 4; ++d) {
                sparse.addEdge(node, 0, grid.pairs[n][2 * d], grid.pairs[n][2 * d + 1],
                               grid.earlier(node, static_cast<int>(d)) < 0);
            }
            sparse.addtWeights(node, grid.source[n], grid.sink[n]);
        }
        sparse.skipEdges(6);
        const auto whole = grid.build();
        ASSERT_EQ(sparse.maxFlow(), whole->maxFlow()) << round;
        for (int node = 0; node < 24; ++node) {
            ASSERT_EQ(sparse.getTreeofNode(node), whole->getTreeofNode(node)) << round;
        }
    }
}
