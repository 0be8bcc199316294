// The box around what a request may change, and its narrowing by black borders.
#include "engine/engine_test.h"

namespace {

using WorkingRegionTest = EngineTest;

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
