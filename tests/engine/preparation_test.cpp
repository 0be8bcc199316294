// What the engine prepares once a photograph: grey test and texture.
#include "engine/engine_test.h"

namespace {

using PreparationTest = EngineTest;

TEST_F(PreparationTest, MeanChannelDifferenceOfOneIsColour) {
    const auto isGrey = [this](std::uint32_t first, std::uint32_t second) {
        start(2, 1, [=](int x, int) { return x == 0 ? first : second; });
        EXPECT_EQ(pHybrid->greyScaleTest(VORNSEMarker::m_srcImage), VORNSEMarker::m_isGreyScale);
        EXPECT_EQ(VORNSEMarker::m_texHor != nullptr, VORNSEMarker::m_isGreyScale);
        return VORNSEMarker::m_isGreyScale;
    };
    EXPECT_TRUE(isGrey(0x050505U, 0x070707U));
    EXPECT_TRUE(isGrey(0x060505U, 0x050505U));   // 1 over 2 pixels
    EXPECT_FALSE(isGrey(0x060505U, 0x050605U));  // 2 over 2 pixels
    EXPECT_FALSE(isGrey(0x050506U, 0x050505U));  // channel 0 counts in both differences
}

TEST_F(PreparationTest, TextureTakesDifferencesToTheRightAndUpperNeighbour) {
    const int values[3][4] = {{10, 20, 40, 80}, {11, 25, 35, 100}, {0, 5, 10, 15}};
    start(4, 3, [&](int x, int y) { return greyWord(values[y][x]); });
    // Last column: horizontally the left difference; vertically that of byte 3 of the rows, which
    // is pixel 1. Pixel (3, 0) stays 0.
    EXPECT_EQ(bytesOf(VORNSEMarker::m_texHor), (Bytes{10, 20, 40, 0,   //
                                                      14, 10, 65, 65,  //
                                                      5, 5, 5, 5}));
    EXPECT_EQ(bytesOf(VORNSEMarker::m_texVer), (Bytes{1, 5, 5, 0,  //
                                                      1, 5, 5, 5,  //
                                                      11, 20, 25, 20}));
}

}  // namespace
