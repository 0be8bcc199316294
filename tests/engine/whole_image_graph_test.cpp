// The terminal weights of one cut, read back from the residuals.
#include <cmath>
#include <limits>

#include "engine/engine_test.h"
#include "graph/graph.h"

namespace {

class WholeImageGraphTest : public EngineTest {
  protected:
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
