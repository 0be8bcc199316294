// The box around what a request may change, and its narrowing by black borders.
#include "engine/engine_test.h"

namespace {

class WorkingRegionTest : public EngineTest {
  protected:
    // The box of a request on a 60 x 50 image with labels 4 and 3 apart from each other and a free
    // pixel beside them.
    void expectBox(int type, std::vector<int> points, const Area& expected, int areaTenth) {
        startBlue(60, 50);
        ImagePtr labels = imageWith(60, 50, {{0, 0, 60, 50}}, 1);
        fill(labels, {20, 25, 14, 4}, 4);
        fill(labels, {1, 2, 3, 1}, 3);
        fill(labels, {15, 48, 1, 1}, 0);
        setLabels(std::move(labels));
        setStroke(type, std::move(points));
        pHybrid->computeBoundingBox();
        EXPECT_EQ(region(), expected);
        EXPECT_EQ(pHybrid->m_boxAreaTenth, areaTenth);
    }
};

TEST_F(WorkingRegionTest, BrushTakesItsBandWithTenPixelsAround) {
    // x 20 .. 33, y 25 .. 28; a tenth of 13 x 3 = 39 is truncated to 3.
    expectBox(stroke::kBrushAdd, {1, 1}, {10, 15, 34, 24}, 3);
}

TEST_F(WorkingRegionTest, BoxIsClampedToTheImage) {
    // x 1 .. 3, y 2.
    expectBox(stroke::kBrushRemove, {30, 30}, {0, 0, 14, 13}, 0);
    expectBox(stroke::kLoopAdd, {5, 48, 49, 49}, {0, 38, 60, 12}, 4);
    expectBox(stroke::kLoopRemove, {30, 20, 40, 30}, {20, 10, 31, 31}, 10);
    // No stroke: free and candidate labels, x 15 .. 33, y 25 .. 48.
    expectBox(stroke::kLoopAdd, {}, {5, 15, 39, 35}, 41);
    expectBox(stroke::kLoopAdd, {12, 12, 48, 38}, {2, 2, 57, 47}, 93);
}

TEST_F(WorkingRegionTest, NothingToChangeGivesTheCorner) {
    startBlue(60, 50);
    setLabels(imageWith(60, 50, {{0, 0, 60, 50}}, 1));
    setStroke(stroke::kLoopAdd, {});
    pHybrid->computeBoundingBox();
    EXPECT_EQ(region(), Area(0, 0, 11, 11));
}

TEST_F(WorkingRegionTest, StrokeIsScaledToWorkingPixels) {
    startBlue(640, 480);
    setStroke(stroke::kLoopAdd, {101, 61, 201, 141});  // (50, 30) to (100, 70)
    pHybrid->computeBoundingBox();
    EXPECT_EQ(region(), Area(40, 20, 71, 61));
    EXPECT_EQ(pHybrid->m_boxAreaTenth, 200);
}

class BlackBorderTest : public WorkingRegionTest {
  protected:
    // Narrows a region of a 12 x 10 image that is black outside `bright`; all labels are 4 before.
    Rows narrow(const Area& bright, const Area& before) {
        start(12, 10,
              [&](int x, int y) { return bright.contains(cv::Point(x, y)) ? 0x010000U : 0U; });
        setLabels(imageWith(12, 10, {{0, 0, 12, 10}}, 4));
        setRegion(before);
        pHybrid->removeBlackRegion();
        return textOf(VORNSEMarker::m_labelImage);
    }
    const Rows m_untouched{10, std::string(12, '4')};
};

TEST_F(BlackBorderTest, BarIsCutOffTogetherWithTheOutermostLines) {
    const Rows labels = narrow({0, 3, 12, 7}, {1, 1, 10, 8});
    EXPECT_EQ(region(), Area(1, 3, 10, 6));
    const std::string cut = "411111111114";
    const std::string kept = "414444444414";
    const std::string outside = "444444444444";
    EXPECT_EQ(labels, (Rows{outside, cut, cut, cut, kept, kept, kept, kept, cut, outside}));
}

TEST_F(BlackBorderTest, NothingChangesWithoutBordersOrWithoutContent) {
    EXPECT_EQ(narrow({0, 0, 12, 10}, {0, 0, 12, 10}), m_untouched);
    EXPECT_EQ(region(), Area(0, 0, 12, 10));
    EXPECT_EQ(narrow({0, 0, 2, 10}, {3, 2, 9, 8}), m_untouched);
    EXPECT_EQ(region(), Area(3, 2, 9, 8));
}

}  // namespace
