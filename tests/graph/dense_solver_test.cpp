// The dense search against the plain one on the graph's records, bit for bit.
#include <gtest/gtest.h>

#include <cstring>

#include "graph/block_view.h"
#include "graph/grid.h"
#include "support/fake_clock.h"

namespace {

constexpr std::int64_t kSecond = 1000000;

using DenseSearch = FlowTest;

// A view of one block that is the whole grid searches the records.
float plainSearch(VORNSEGraph& graph) {
    const BlockViewPtr view = createBlockView(&graph, 0, 0, graph.m_width, graph.m_height);
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
        const float residuals[] = {dense.m_nodes[node].residualTerminalCap,
                                   plain.m_nodes[node].residualTerminalCap};
        ASSERT_EQ(std::memcmp(residuals, residuals + 1, sizeof(float)), 0) << round;
    }
}

Grid seededGrid(std::mt19937& random, int round) {
    // Few whole values make ties, fractions make roundings, infinite ones make what is no number,
    // subnormal ones vanish on units that flush them, large grids make long paths.
    return randomGrid(random, round % 20 == 1 ? 150 : 24, [&, round] {
        if (round % 5 == 2 && random() % 64 == 0) {
            return std::numeric_limits<float>::infinity();
        }
        if (round % 5 == 3) {
            return std::numeric_limits<float>::denorm_min() * static_cast<float>(random() % 5000);
        }
        return round % 2 == 0 ? static_cast<float>(random() % 4)
                              : static_cast<float>(random()) * 1e-9F;
    });
}

// One corridor to and fro through the grid: paths of up to half its pixels.
Grid serpentine(std::mt19937& random, int side) {
    Grid grid(side, side);
    const auto capacity = [&] { return static_cast<float>(random()) * 1e-9F; };
    const auto open = [&](int a, int b) {
        grid.capacity(a, b) = capacity();
        grid.capacity(b, a) = capacity();
    };
    for (int y = 0; y < side; y += 2) {
        for (int x = 1; x < side; ++x) {
            open(y * side + x, y * side + x - 1);
        }
    }
    for (int y = 1; y + 1 < side; y += 2) {
        const int bend = y * side + (y % 4 == 1 ? side - 1 : 0);
        open(bend, bend - side);
        open(bend, bend + side);
    }
    grid.source.front() = grid.sink.back() = 9.0F;
    for (int i = 0; i < 2; ++i) {
        const auto node = random() % grid.source.size();
        (i % 2 == 0 ? grid.source : grid.sink)[node] = capacity();
    }
    return grid;
}

}  // namespace

TEST_F(DenseSearch, FollowsPathsOfAnyLength) {
    std::mt19937 random(13);
    for (int round = 0; round < 10; ++round) {
        const Grid grid = serpentine(random, 101);
        const auto dense = grid.build();
        const auto plain = grid.build();
        ASSERT_EQ(denseSearch(*dense), plainSearch(*plain)) << round;
        expectSame(*dense, *plain, round);
    }
}

TEST_F(DenseSearch, EndsOrStopsWhereThePlainSearchDoes) {
    std::mt19937 random(9);
    CpuTimer timer{};
    const FakeClock clock(0, kSecond);
    for (int round = 0; round < 400; ++round) {
        const Grid grid = seededGrid(random, round);
        const auto dense = grid.build();
        const auto plain = grid.build();
        // Every fourth round the limit passes after some scans, at one second a reading.
        g_cancelTimer = round % 4 == 0 ? &timer : nullptr;
        const auto start = static_cast<std::int64_t>(9 - random() % 40) * kSecond;
        FakeClock::set(start);
        dense->m_flow = denseSearch(*dense);
        const bool stopped = VORNSEMarker::m_exitApp.exchange(false);
        FakeClock::set(start);
        plain->m_flow = plainSearch(*plain);
        ASSERT_EQ(std::memcmp(&dense->m_flow, &plain->m_flow, sizeof(float)), 0) << round;
        ASSERT_EQ(VORNSEMarker::m_exitApp.exchange(false), stopped) << round;
        expectSame(*dense, *plain, round);
    }
}

TEST_F(DenseSearch, SkippedRowsTakeNoPart) {
    std::mt19937 random(11);
    for (int round = 0; round < 20; ++round) {
        const Grid grid = seededGrid(random, round);
        Grid padded(grid.width, grid.height + 2);
        std::copy(grid.pairs.begin(), grid.pairs.end(), padded.pairs.begin() + grid.width);
        std::copy(grid.source.begin(), grid.source.end(), padded.source.begin() + grid.width);
        std::copy(grid.sink.begin(), grid.sink.end(), padded.sink.begin() + grid.width);
        const auto sparse = padded.build(0, 1, grid.height + 1);
        const auto whole = grid.build();
        ASSERT_EQ(sparse->maxFlow(), whole->maxFlow()) << round;
        for (int node = 0; node < grid.size(); ++node) {
            ASSERT_EQ(sparse->getTreeofNode(grid.width + node), whole->getTreeofNode(node));
        }
    }
}
