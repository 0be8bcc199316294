// The graph of one cut, its terminal weights read back from the residuals, and that of the band
// along the outline, at photo size.
#include <cmath>
#include <limits>

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

TEST_F(UpscalingTest, BandReachesThreeWorkingPixelsBeyondTheObject) {
    VORNSEHybrid& engine = startBlue(640, 480);  // twice the working size
    setLabels(imageWith(320, 240, {{100, 80, 40, 30}}, label::kObject));
    engine.m_fgModel = engine.m_bgModel = unitModel(0.0, 0.0, 0.0);
    const ImagePtr working = imageWith(320, 240, {{100, 80, 40, 30}}, 1);
    const ImagePtr mask(engine.intelligentUpscaling(working.get()));
    EXPECT_EQ(engine.m_boundWidthTrimap, 2 * (40 + 6));
    EXPECT_EQ(engine.m_boundHeightTrimap, 2 * (30 + 6));
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

struct WholeImageGraphTest : EngineTest {
    // What the nodes of a row with these labels are left with.
    std::vector<float> residualsOf(const std::string& labels) {
        setRegion({0, 0, static_cast<int>(labels.size()), 1});
        pHybrid->clearMemory();
        pHybrid->graphSpaceAllocator();
        pHybrid->m_cropImage = pHybrid->cropImage(VORNSEMarker::m_srcImage);
        pHybrid->m_cropLabel = imageOf({labels}).release();
        pHybrid->constructGraphVORN_Whole_Image();
        std::vector<float> residuals;
        for (std::size_t node = 0; node < labels.size(); ++node) {
            residuals.push_back(pHybrid->m_graph->m_nodes[node].residualTerminalCap);
        }
        return residuals;
    }
};

TEST_F(WholeImageGraphTest, FixedLabelsAreTiedAndOthersFollowTheModels) {
    VORNSEHybrid& engine =
        start(4, 1, [](int x, int) { return 0x0A0A00U + static_cast<unsigned>(x); });
    // Pixel x lies at squared distance (x - 1)^2 + 4 from the object's mean and x^2 from the
    // background's: minus half of it is the logarithm of the density.
    engine.m_fgModel = unitModel(1.0, 12.0, 10.0);
    engine.m_bgModel = unitModel(0.0, 10.0, 10.0);
    EXPECT_EQ(residualsOf("123."), (std::vector{-1000.0F, 1000.0F, 2.0F - 2.5F, 4.5F - 4.0F}));
    EXPECT_FLOAT_EQ(engine.m_graph->m_flow, 2.0F + 4.0F);
    // A density of 0 is an infinite capacity.
    engine.m_bgModel = VORNSEColorModel();
    EXPECT_EQ(residualsOf("4")[0], std::numeric_limits<float>::infinity());
    engine.m_fgModel = VORNSEColorModel();
    EXPECT_TRUE(std::isnan(residualsOf("4")[0]));
}

TEST_F(WholeImageGraphTest, GreyPixelWithoutPreferenceIsFree) {
    VORNSEHybrid& engine = start(1, 1, [](int, int) { return greyWord(100); });
    engine.m_bgModel = unitModel(103.0, 0.0, 0.0);
    engine.m_fgModel = unitModel(103.0, 0.0, 0.0, std::exp(0.00005));
    EXPECT_EQ(residualsOf("4")[0], 0.0F);
    engine.m_fgModel = unitModel(103.0, 0.0, 0.0, std::exp(0.0002));
    EXPECT_NEAR(residualsOf("4")[0], 0.0002F, 1e-6F);
}

}  // namespace
