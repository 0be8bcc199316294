#include "graph/parallel_gc.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "engine/hybrid.h"
#include "graph/grid.h"
#include "interface/engine_state.h"
#include "support/host_session.h"
#include "support/injected_faults.h"
#include "support/log_capture.h"

namespace {

constexpr int kCounts[] = {1, 2, 3, 4, 5, 6, 8, 9, 12};

class ParallelCut : public FlowTest {
  protected:
    // The solvers poll a running timer, as they do in a request.
    ParallelCut() {
        g_cancelTimer = &timer;
        start_cpu_timer(g_cancelTimer);
        clearLog();
    }

    CpuTimer timer{};
};

// Few whole capacities, so that weights are exact and many edges saturate at once.
Grid tiedGrid(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    const auto upTo = [&](unsigned most) { return static_cast<float>(random() % (most + 1)); };
    Grid grid(width, height);
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = upTo(3); });
    for (std::size_t node = 0; node < grid.source.size(); ++node) {
        (upTo(1) > 0.5F ? grid.source : grid.sink)[node] = upTo(11);
    }
    return grid;
}

// The engine's graph of a box request on a photograph of the samples, made smaller.
Grid photographGrid(const char* file) {
    cv::Mat image = cv::imread(std::string(SEGCORE_SAMPLES) + '/' + file);
    cv::resize(image, image, cv::Size(150, 100), 0.0, 0.0, cv::INTER_AREA);
    Scene scene;
    scene.width = image.cols;
    scene.height = image.rows;
    for (auto p = image.begin<cv::Vec3b>(); p != image.end<cv::Vec3b>(); ++p) {
        scene.pixels.push_back(static_cast<std::uint32_t>((*p)[0] | (*p)[1] << 8 | (*p)[2] << 16));
    }
    g_cancelTimer = nullptr;  // the request makes its own
    HostSession session(scene);
    EXPECT_EQ(session.box(15, 5, 135, 95), 0);
    VORNSEHybrid& engine = *pHybrid;
    engine.computeBoundingBox();
    engine.preProcess();
    engine.graphSpaceAllocator();
    engine.m_cropImage = engine.cropImage(VORNSEMarker::m_srcImage);
    engine.m_cropLabel = engine.cropImage(VORNSEMarker::m_labelImage);
    engine.constructGraphVORN_Whole_Image();
    const VORNSEGraph& graph = *engine.m_graph;
    Grid grid(graph.m_width, graph.m_height);
    for (std::size_t n = 0; n < grid.pairs.size(); ++n) {
        std::transform(graph.m_edgeCaps + 8 * n, graph.m_edgeCaps + 8 * (n + 1),
                       grid.pairs[n].begin(), [](float cap) { return std::max(cap, 0.0F); });
        const float residual = graph.m_nodes[n].residualTerminalCap;
        (residual > 0.0F ? grid.source : grid.sink)[n] = std::fabs(residual);
    }
    engine.clearMemory();
    return grid;
}

}  // namespace

TEST_F(ParallelCut, BlocksFormTheGridOfTheirCount) {
    const int grids[][3] = {{1, 1, 1}, {2, 2, 1}, {3, 3, 1},  {4, 2, 2}, {6, 3, 2},
                            {8, 4, 2}, {9, 3, 3}, {12, 4, 3}, {7, 1, 7}, {0, 1, 1}};
    const auto graph = Grid(10, 7).build();
    for (const auto& [count, across, down] : grids) {
        const ParallelGC solver(graph.get(), count);
        EXPECT_EQ(std::pair(solver.m_blocksX, solver.m_blocksY), std::pair(across, down)) << count;
        EXPECT_EQ(solver.m_blockWidth, (10 + across - 1) / across);
        EXPECT_EQ(solver.m_blockHeight, (7 + down - 1) / down);
    }
}

TEST_F(ParallelCut, WeighsNoMoreThanTheTextbookCut) {
    const int sizes[][2] = {{13, 11}, {29, 17}, {24, 24}, {1, 31}, {37, 1}, {5, 2}, {2, 5}, {1, 1}};
    for (const auto& [width, height] : sizes) {
        for (unsigned seed = 0; seed < 4; ++seed) {
            Grid grid = tiedGrid(width, height, seed);
            const double minimum = textbookMaxFlow(grid);
            for (const int count : kCounts) {
                const auto graph = grid.build(count);
                ParallelGC solver(graph.get(), count);
                start_cpu_timer(g_cancelTimer);
                EXPECT_EQ(solver.maxFlow(), 0.0F);
                EXPECT_EQ(grid.cutWeight(*graph), minimum) << width << ' ' << seed << ' ' << count;
                EXPECT_TRUE(solver.m_pairList.empty());
            }
        }
    }
}

TEST_F(ParallelCut, OfAPhotographWeighsTheSameAsTheSerialCut) {
    for (const char* file : {"coffee.png", "astronaut.png", "rocket.jpg"}) {
        Grid grid = photographGrid(file);
        g_cancelTimer = &timer;
        start_cpu_timer(g_cancelTimer);
        const auto serial = grid.build();
        const auto flow = static_cast<double>(serial->maxFlow());
        const double weight = grid.cutWeight(*serial);
        EXPECT_NEAR(weight, flow, 1e-4 * flow);
        EXPECT_GT(weight, 100.0);
        for (const int count : kCounts) {
            const auto graph = grid.build(count);
            start_cpu_timer(g_cancelTimer);
            graph->maxFlow();
            EXPECT_NEAR(grid.cutWeight(*graph), weight, 1e-6 * weight) << file << ' ' << count;
        }
    }
}

TEST_F(ParallelCut, IsTheSameEveryTimeAlsoWhenThreadsCannotBeStarted) {
    Grid grid = tiedGrid(40, 30, 1);
    const auto solve = [&grid] {
        const auto graph = grid.build(9);
        EXPECT_EQ(graph->maxFlow(), 0.0F);
        std::vector<int> cut;
        for (int node = 0; node < graph->m_nodeCount; ++node) {
            cut.push_back(graph->getTreeofNode(node));
        }
        return cut;
    };
    const std::vector<int> cut = solve();
    EXPECT_EQ(solve(), cut);
    EXPECT_TRUE(takeErrors().empty());
    // Nine threads each for numbering, partition and block solve, eight for merging.
    for (const int available : {0, 3, 14, 34}) {
        armFault(Fault::kThread, available + 1, true);
        EXPECT_EQ(solve(), cut);
        disarmFault();
        EXPECT_EQ(takeErrors().size(), static_cast<std::size_t>(35 - available));
    }
}

TEST_F(ParallelCut, CancelledItStillPutsEveryEdgeBack) {
    const Grid grid = tiedGrid(12, 9, 7);
    const auto graph = grid.build(6);
    const std::vector<float> before = capacitiesOf(*graph);
    VORNSEMarker::m_exitApp = true;
    graph->maxFlow();
    EXPECT_EQ(capacitiesOf(*graph), before);
}
