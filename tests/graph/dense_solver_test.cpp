// The dense search against the plain one on the graph's records, bit for bit.
#include <gtest/gtest.h>
#include <limits>

#include "graph/block_view.h"
#include "graph/grid.h"
#include "support/fake_clock.h"

namespace {

constexpr std::int64_t kSecond = 1000000;

using DenseSearch = FlowTest;

// Views are searched on the records.
void plainSearch(VORNSEGraph& graph) {
    graph.m_flow = createBlockView(&graph, 0, 0, graph.m_width, graph.m_height)->maxFlow();
}

// A corridor that turns at both borders, for paths of thousands of steps, with a few short cuts.
Grid serpentine(std::mt19937& random, int side) {
    Grid grid(side, side);
    grid.forEachEdge([&](int from, int to) {
        const int rows[] = {from / side, to / side};
        const bool along = rows[0] == rows[1] && rows[0] % 2 == 0;
        const int turningRow = rows[0] % 2 == 1 ? rows[0] : rows[1];
        const int turningColumn = turningRow % 4 == 1 ? side - 1 : 0;
        const bool turn = from % side == turningColumn && to % side == turningColumn;
        if (along || turn || random() % 10000 == 0) {
            grid.capacity(from, to) = static_cast<float>(random()) * 1e-9F;
        }
    });
    grid.source.front() = grid.sink.back() = 9.0F;
    return grid;
}

Grid seededGrid(std::mt19937& random, int round) {
    if (round % 40 == 7) {
        return serpentine(random, 101);
    }
    // Few whole values make ties, fractions make roundings, infinite ones make what is no number,
    // subnormal ones vanish on units that flush them, large grids make long paths.
    const auto side = [&] { return 1 + static_cast<int>(random() % (round % 20 == 1 ? 150 : 24)); };
    return randomGrid(random, side(), side(), [&, round] {
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

}  // namespace

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
        dense->maxFlow();
        const bool stopped = VORNSEMarker::m_exitApp.exchange(false);
        FakeClock::set(start);
        plainSearch(*plain);
        ASSERT_EQ(VORNSEMarker::m_exitApp.exchange(false), stopped) << round;
        ASSERT_TRUE(contentOf(*dense) == contentOf(*plain)) << round;
    }
}

TEST_F(DenseSearch, SkippedNodesReadAsNodesWithoutEdges) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        Grid grid = seededGrid(random, round);
        const std::size_t stretch = 1 + random() % 40;
        for (std::size_t node = 0; node < grid.outside.size(); ++node) {
            grid.outside[node] = node / stretch % 3 == 1;
        }
        const auto skipped = grid.build();
        const auto added = grid.build(0, false);
        skipped->maxFlow();
        added->maxFlow();
        ASSERT_TRUE(contentOf(*skipped) == contentOf(*added)) << round;
    }
}
