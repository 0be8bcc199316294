// From the working mask to photo size through a cut in the band along its outline.
#include "engine/engine_test.h"
#include "graph/graph.h"

namespace {

using UpscalingTest = EngineTest;

TEST_F(UpscalingTest, MaskWithoutOutlineIsEnlarged) {
    startBlue(640, 480);  // reduced by 2
    const auto upscaled = [](const ImagePtr& mask) {
        return textOf(ImagePtr(pHybrid->intelligentUpscaling(mask.get())));
    };
    const LogLine failed{6, "Error", "Failed: xmin:2147483647, xmax:-1, ymin:2147483647, ymax:-1"};
    EXPECT_EQ(upscaled(imageWith(320, 240, {}, 0)), Rows(480, std::string(640, '.')));
    EXPECT_EQ(takeLog(), Log{failed});
    // Full masks have none either: the image's border is not an outline.
    EXPECT_EQ(upscaled(imageWith(320, 240, {{0, 0, 320, 240}}, 1)),
              Rows(480, std::string(640, '#')));
    EXPECT_EQ(takeLog(), Log{failed});
}

TEST_F(UpscalingTest, ImpossiblePhotographIsLogged) {
    startBlue(640, 480);
    const ImagePtr mask = imageWith(320, 240, {{100, 100, 50, 50}}, 1);
    VORNSEMarker::m_originalWidth = 0;
    EXPECT_THROW(pHybrid->intelligentUpscaling(mask.get()), cv::Exception);
    EXPECT_EQ(takeErrors(), Log(3, {6, "Error", "MEMORY_CRASH : intelligentUpscaling 1460"}));
}

TEST_F(UpscalingTest, PixelsOutsideTheBandReadAsFreeNodesWithoutEdges) {
    VORNSEHybrid& engine = startBlue(640, 480);
    const std::string codes = "7." + std::string(200, '7') + "12." + std::string(60, '7');
    const auto width = static_cast<int>(codes.size());
    engine.m_lambda = 1.0;
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
