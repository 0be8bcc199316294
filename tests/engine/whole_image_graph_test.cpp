// The graph of one cut, read back from its capacity slots and terminal residuals.
#include <cmath>
#include <limits>

#include "engine/engine_test.h"
#include "graph/graph.h"

namespace {

class WholeImageGraphTest : public EngineTest {
  protected:
    // Builds the graph of a region whose labels are given row by row.
    VORNSEGraph& build(int x, int y, const Rows& labels) {
        setRegion({x, y, static_cast<int>(labels[0].size()), static_cast<int>(labels.size())});
        pHybrid->clearMemory();
        pHybrid->graphSpaceAllocator();
        pHybrid->m_cropImage = pHybrid->cropImage(VORNSEMarker::m_srcImage);
        pHybrid->m_cropLabel = imageOf(labels).release();
        pHybrid->constructGraphVORN_Whole_Image();
        return *pHybrid->m_graph;
    }
    static float residual(int node) { return pHybrid->m_graph->m_nodes[node].residualTerminalCap; }
};

TEST_F(WholeImageGraphTest, LinksAreTheRegionsRecordsTimesTheWeight) {
    VORNSEHybrid& engine = startBlue(5, 4);
    // Slot s of record r holds r + s / 8, so that every capacity tells where it came from.
    for (int i = 0; i < 4 * 5 * 4; ++i) {
        engine.m_nLinks[i] = static_cast<float>(i / 4) + 0.125F * static_cast<float>(i % 4);
    }
    engine.m_lambda = 8.0;
    const VORNSEGraph& graph = build(1, 2, {"111", "111"});
    ASSERT_EQ(graph.m_nodeCount, 6);
    ASSERT_EQ(graph.m_edgeCount, 48);
    // Records 11, 12, 13 in the first row and 16, 17, 18 in the second; -2 where there is no link.
    const float expected[6][4] = {{-2, -2, -2, -2},   {96, -2, -2, -2},     {104, -2, -2, -2},
                                  {-2, -2, 130, 131}, {136, 137, 138, 139}, {144, 145, 146, -2}};
    for (int node = 0; node < 6; ++node) {
        for (int slot = 0; slot < 4; ++slot) {
            EXPECT_EQ(graph.m_edgeCaps[8 * node + 2 * slot], expected[node][slot]);
            EXPECT_EQ(graph.m_edgeCaps[8 * node + 2 * slot + 1], expected[node][slot]);
        }
    }
}

TEST_F(WholeImageGraphTest, FixedLabelsAreTiedAndOthersFollowTheModels) {
    VORNSEHybrid& engine =
        start(4, 1, [](int x, int) { return 0x0A0A00U + static_cast<unsigned>(x); });
    // Pixel x lies at squared distance (x - 1)^2 + 4 from the object's mean and x^2 from the
    // background's: minus half of it is the logarithm of the density.
    engine.m_fgModel = unitModel(1.0, 12.0, 10.0);
    engine.m_bgModel = unitModel(0.0, 10.0, 10.0);
    const VORNSEGraph& graph = build(0, 0, {"123."});
    EXPECT_EQ(residual(0), -1000.0F);
    EXPECT_EQ(residual(1), 1000.0F);
    EXPECT_FLOAT_EQ(residual(2), 2.0F - 2.5F);
    EXPECT_FLOAT_EQ(residual(3), 4.5F - 4.0F);
    EXPECT_FLOAT_EQ(graph.m_flow, 2.0F + 4.0F);
}

TEST_F(WholeImageGraphTest, DensityOfZeroIsAnInfiniteCapacity) {
    VORNSEHybrid& engine = startBlue(1, 1);
    engine.m_fgModel = unitModel(160.0, 48.0, 30.0);
    engine.m_bgModel = VORNSEColorModel();
    build(0, 0, {"4"});
    EXPECT_EQ(residual(0), std::numeric_limits<float>::infinity());
    engine.m_fgModel = VORNSEColorModel();
    build(0, 0, {"4"});
    EXPECT_TRUE(std::isnan(residual(0)));
}

TEST_F(WholeImageGraphTest, GreyPixelWithoutPreferenceIsFree) {
    VORNSEHybrid& engine = start(1, 1, [](int, int) { return greyWord(100); });
    engine.m_bgModel = unitModel(103.0, 0.0, 0.0);
    const auto preference = [&](double weight) {
        engine.m_fgModel = unitModel(103.0, 0.0, 0.0, weight);
        build(0, 0, {"4"});
        return residual(0);
    };
    EXPECT_EQ(preference(std::exp(0.00005)), 0.0F);
    EXPECT_NEAR(preference(std::exp(0.0002)), 0.0002F, 1e-6F);
}

}  // namespace
