// The cut in the band along the outline, at photo size.
#include <cmath>

#include "engine/engine_test.h"
#include "graph/graph.h"

namespace {

using UpscalingTest = EngineTest;

TEST_F(UpscalingTest, ImpossiblePhotographIsLogged) {
    startBlue(640, 480);
    const ImagePtr mask = imageWith(320, 240, {{100, 100, 50, 50}}, 1);
    VORNSEMarker::m_originalWidth = 0;
    EXPECT_THROW(pHybrid->intelligentUpscaling(mask.get()), cv::Exception);
    EXPECT_EQ(takeErrors(), Log(3, {6, "Error", "MEMORY_CRASH : intelligentUpscaling 1460"}));
}

TEST_F(UpscalingTest, BandIsLinkedByContrastAndPixelsOutsideHaveNoEdges) {
    VORNSEHybrid& engine = startBlue(640, 480);
    // A short and a long stretch outside, the same in both rows.
    const std::string codes = "7." + std::string(200, '7') + "12." + std::string(60, '7');
    const auto width = static_cast<int>(codes.size());
    engine.m_boundWidthTrimap = width;
    engine.m_boundHeightTrimap = 2;
    engine.m_lambda = 13.2;  // not a float: where it becomes one shows
    engine.m_beta = 0.001;
    Bytes pixels(6 * codes.size());
    pixels[3 * 203] = 30;  // above the second row's node 203
    const ImagePtr image = imageOf(width, 2, 3, pixels);
    ASSERT_EQ(engine.constructGraphTrimapVORN(image.get(), nullptr, imageOf({codes, codes}).get(),
                                              nullptr, nullptr),
              0);
    const VORNSEGraph& graph = *engine.m_trimapGraph;
    for (int node = 0; node < 2 * width; ++node) {
        if (codes[static_cast<std::size_t>(node % width)] == '7') {
            EXPECT_EQ(graph.nodeAt(node).parentEdge, -3) << node;
            EXPECT_EQ(graph.nodeAt(node).treeLabel, 2) << node;
            for (int slot = 8 * node; slot < 8 * (node + 1); ++slot) {
                EXPECT_EQ(graph.capacityAt(slot), -2.0F) << node;
            }
        }
    }
    EXPECT_EQ(graph.m_nodes[100].parentEdge, 0);  // the long stretch was never written
    EXPECT_EQ(graph.nodeAt(202).residualTerminalCap, -1000.0F);
    EXPECT_EQ(graph.nodeAt(203).residualTerminalCap, 1000.0F);
    // Left links carry the weight alone.
    const float contrast = expf(-900 * 0.001F);
    const auto diagonal = static_cast<float>(13.2 * 0.7071067932881648);
    const float expected[3][4] = {
        {-2, -2, static_cast<float>(13.2), contrast * diagonal},
        {13.2F, diagonal, static_cast<float>(13.2 * static_cast<double>(contrast)), diagonal},
        {13.2F, contrast * diagonal, 13.2F, -2}};
    for (int i = 0; i < 12; ++i) {
        const int slot = 8 * (width + 202 + i / 4) + 2 * (i % 4);
        EXPECT_EQ(graph.capacityAt(slot), expected[i / 4][i % 4]) << i;
        EXPECT_EQ(graph.capacityAt(slot + 1), expected[i / 4][i % 4]) << i;
    }
}

}  // namespace
