// What comes before the first cut: grey test and texture of a photograph, the labels and the working
// region of a request.
#include "engine/engine_test.h"

namespace {

using PreparationTest = EngineTest;
using LabelImageTest = EngineTest;
using WorkingRegionTest = EngineTest;

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

TEST_F(LabelImageTest, BrushGrowsABandOfThirteenPixels) {
    startBlue(320, 240);
    for (const int type : {stroke::kBrushAdd, stroke::kBrushRemove}) {
        const int own = type == stroke::kBrushAdd ? 2 : 1;
        setStroke(type, {});
        const ImagePtr markers = imageWith(320, 240, {{100, 90, 1, 1}}, own);
        pHybrid->setLabelImage(markers.get());
        for (const int unmarked : {1, 0}) {
            const ImagePtr expected = imageWith(320, 240, {{0, 0, 320, 240}}, unmarked);
            fill(expected, {87, 77, 27, 27}, own + 2);
            fill(expected, {100, 90, 1, 1}, own);
            EXPECT_EQ(textOf(unmarked == 1 ? VORNSEMarker::m_labelImage : markers.get()),
                      textOf(expected));
        }
    }
}

TEST_F(WorkingRegionTest, BoxTakesWhatMayChangeWithTenPixelsAround) {
    struct {
        int type;
        std::vector<int> points;
        Area box;
        int areaTenth;
    } const cases[] = {
        {stroke::kBrushAdd, {1, 1}, {10, 15, 34, 24}, 3},     // 4: x 20 .. 33, y 25 .. 28
        {stroke::kBrushRemove, {30, 30}, {0, 0, 14, 13}, 0},  // 3: x 1 .. 3, y 2
        {stroke::kLoopAdd, {}, {5, 15, 39, 35}, 41},          // 0, too, at (15, 48)
        {stroke::kLoopAdd, {5, 48, 49, 49}, {0, 38, 60, 12}, 4},
        {stroke::kLoopRemove, {12, 12, 48, 38}, {2, 2, 57, 47}, 93},
        {stroke::kBrushRemove, {9, 9}, {0, 0, 11, 11}, 0},  // without a 3: the corner
    };
    for (const auto& c : cases) {
        startBlue(60, 50);
        ImagePtr labels = imageWith(60, 50, {{0, 0, 60, 50}}, 1);
        fill(labels, {20, 25, 14, 4}, 4);
        fill(labels, {1, 2, 3, 1}, c.points == std::vector{9, 9} ? 1 : 3);
        fill(labels, {15, 48, 1, 1}, 0);
        setLabels(std::move(labels));
        setStroke(c.type, c.points);
        pHybrid->computeBoundingBox();
        EXPECT_EQ(region(), c.box) << &c - cases;
        EXPECT_EQ(pHybrid->m_boxAreaTenth, c.areaTenth) << &c - cases;
    }
}

TEST_F(WorkingRegionTest, RegionWithoutContentStays) {
    startBlue(12, 10);
    cvSetZero(VORNSEMarker::m_srcImage);
    setRegion({3, 2, 9, 8});
    pHybrid->removeBlackRegion();
    EXPECT_EQ(region(), Area(3, 2, 9, 8));
}

}  // namespace
