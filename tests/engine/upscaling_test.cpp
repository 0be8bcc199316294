// From the working mask to photo size through a cut in the band along its outline.
#include <cmath>

#include "engine/engine_test.h"
#include "graph/graph.h"

namespace {

class UpscalingTest : public EngineTest {
  protected:
    // 640 x 480, reduced by 2: a bright rectangle in photo pixels on a dark ground, and models that
    // know both colours.
    VORNSEHybrid& startRectangle(const Area& bright) {
        VORNSEHybrid& engine = start(640, 480, [=](int x, int y) {
            return bright.contains(cv::Point(x, y)) ? 0x2040C8U : 0x204010U;
        });
        engine.m_fgModel = unitModel(200.0, 64.0, 32.0);
        engine.m_bgModel = unitModel(16.0, 64.0, 32.0);
        engine.m_lambda = 1.0;
        return engine;
    }
    static Rows upscaled(const ImagePtr& mask) {
        const ImagePtr result(pHybrid->intelligentUpscaling(mask.get()));
        EXPECT_EQ(pHybrid->m_trimapGraph, nullptr);
        return textOf(result);
    }
};

TEST_F(UpscalingTest, MaskWithoutOutlineIsEnlarged) {
    startRectangle({200, 160, 40, 40});
    setLabels(imageWith(320, 240, {}, 0));
    const LogLine failed{6, "Error", "Failed: xmin:2147483647, xmax:-1, ymin:2147483647, ymax:-1"};
    EXPECT_EQ(upscaled(imageWith(320, 240, {}, 0)), Rows(480, std::string(640, '.')));
    EXPECT_EQ(takeLog(), Log{failed});
    // Full masks have none either: the image's border is not an outline.
    EXPECT_EQ(upscaled(imageWith(320, 240, {{0, 0, 320, 240}}, 1)),
              Rows(480, std::string(640, '#')));
    EXPECT_EQ(takeLog(), Log{failed});
}

TEST_F(UpscalingTest, ImpossiblePhotographIsLogged) {
    startRectangle({200, 160, 40, 40});
    const ImagePtr mask = imageWith(320, 240, {{100, 100, 50, 50}}, 1);
    VORNSEMarker::m_originalWidth = 0;
    EXPECT_THROW(pHybrid->intelligentUpscaling(mask.get()), cv::Exception);
    EXPECT_EQ(takeErrors(), Log(3, {6, "Error", "MEMORY_CRASH : intelligentUpscaling 1460"}));
}

TEST_F(UpscalingTest, BandGraphTiesItsRingsAndLinksByContrast) {
    VORNSEHybrid& engine = startRectangle({0, 0, 1, 1});
    engine.m_boundWidthTrimap = 3;
    engine.m_boundHeightTrimap = 2;
    engine.m_lambda = 13.2;  // not a float: where it becomes one shows
    engine.m_beta = 0.001;
    const ImagePtr image = imageOf(3, 2, 3,
                                   {0, 10, 0, 0, 20, 0, 0, 40, 0,  //
                                    0, 0, 0, 0, 50, 0, 0, 15, 0});
    engine.m_fgModel = unitModel(0.0, 13.0, 0.0);
    engine.m_bgModel = unitModel(0.0, 17.0, 0.0);
    ASSERT_EQ(engine.constructGraphTrimapVORN(image.get(), nullptr, imageOf({"127", "72."}).get(),
                                              nullptr, nullptr),
              0);
    const VORNSEGraph& graph = *engine.m_trimapGraph;
    // Nodes 2 and 3 are outside the band and take no part.
    const int band[4] = {0, 1, 4, 5};
    const float residuals[4] = {-1000, 1000, 1000, 2.0F - 2.0F};
    const auto contrast = [](int d) { return expf(-static_cast<float>(d * d * 0.001)); };
    const auto diagonal = static_cast<float>(13.2 * 0.7071067932881648);
    const auto up = static_cast<float>(13.2 * static_cast<double>(contrast(30)));
    // Left links carry the weight alone.
    const float expected[4][4] = {{-2, -2, -2, -2},
                                  {13.2F, -2, -2, -2},
                                  {-2, contrast(40) * diagonal, up, -2},
                                  {13.2F, contrast(5) * diagonal, -2, -2}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(graph.m_nodes[band[i]].residualTerminalCap, residuals[i]);
        for (int slot = 0; slot < 4; ++slot) {
            EXPECT_EQ(graph.m_edgeCaps[8 * band[i] + 2 * slot], expected[i][slot]);
            EXPECT_EQ(graph.m_edgeCaps[8 * band[i] + 2 * slot + 1], expected[i][slot]);
        }
    }
}

TEST_F(UpscalingTest, PixelsOutsideTheBandReadAsFreeNodesWithoutEdges) {
    VORNSEHybrid& engine = startRectangle({0, 0, 1, 1});
    const std::string codes = "7." + std::string(200, '7') + "12." + std::string(60, '7');
    const auto width = static_cast<int>(codes.size());
    engine.m_boundWidthTrimap = width;
    engine.m_boundHeightTrimap = 1;
    const ImagePtr image = imageOf(width, 1, 3, Bytes(3 * codes.size()));
    ASSERT_EQ(engine.constructGraphTrimapVORN(image.get(), nullptr, imageOf({codes}).get(), nullptr,
                                              nullptr),
              0);
    const VORNSEGraph& graph = *engine.m_trimapGraph;
    for (int node = 0; node < width; ++node) {
        if (codes[static_cast<std::size_t>(node)] == '7') {
            EXPECT_EQ(graph.nodeAt(node).parentEdge, -3) << node;
            EXPECT_EQ(graph.nodeAt(node).treeLabel, 2) << node;
            for (int slot = 8 * node; slot < 8 * (node + 1); ++slot) {
                EXPECT_EQ(graph.capacityAt(slot), -2.0F) << node;
            }
        }
    }
    EXPECT_EQ(graph.nodeAt(202).residualTerminalCap, -1000.0F);
    EXPECT_EQ(graph.capacityAt(8 * 203), 1.0F);
    EXPECT_EQ(graph.m_nodes[100].parentEdge, 0);  // the long stretch was never written
}

}  // namespace
