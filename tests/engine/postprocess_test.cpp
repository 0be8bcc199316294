// Cleaning of a mask by the kind of the mark, and its merge with the previous result.
#include "engine/engine_test.h"

namespace {

struct PostprocessTest : EngineTest {
    // An engine whose region is the whole photograph.
    void startWhole(int width, int height) {
        startBlue(width, height);
        setRegion({0, 0, width, height});
    }
    static Rows processed(const ImagePtr& mask) {
        pHybrid->postProcess(mask.get());
        return textOf(mask);
    }
    static void setPrevious(const Rows& rows) {
        releaseImage(VORNSEMarker::m_prevResult);
        VORNSEMarker::m_prevResult = imageOf(rows).release();
    }
};

TEST_F(PostprocessTest, LoopLosesIslandsBelowATenthOfTheLargest) {
    startWhole(100, 40);
    setStroke(stroke::kLoopAdd, {});
    // 1000 pixels, 100 and 99, none of them joined at more than a corner.
    const std::vector<Area> kept{{0, 0, 50, 20}, {50, 20, 10, 10}};
    EXPECT_EQ(processed(imageWith(100, 40, {kept[0], kept[1], {80, 20, 11, 9}}, 255)),
              textOf(imageWith(100, 40, kept, 255)));
}

TEST_F(PostprocessTest, LoopFillsHolesBelowFivePixels) {
    startWhole(12, 5);
    setStroke(stroke::kLoopAdd, {});
    // Holes of 5 pixels (the first at the border), of 4, and two single ones joined by a corner.
    EXPECT_EQ(
        processed(imageOf(
            {".....#######", "##########.#", "#..##...###.", "#..##..#####", "############"})),
        (Rows{".....#######", "############", "#####...####", "#####..#####", "############"}));
}

TEST_F(PostprocessTest, LastNumberedHoleIsJudgedWithTheObjectInItsBox) {
    startWhole(100, 60);
    setStroke(stroke::kLoopAdd, {});
    // 253 single holes, then an S of four pixels: its number is 255, as the object's, so the six
    // pixels of its box count. One more single hole has no number left.
    const auto withHoles = [](int count) {
        ImagePtr mask = imageWith(100, 60, {{0, 0, 100, 60}}, 255);
        for (int i = 0; i < count; ++i) {
            fill(mask, {2 + 2 * (i % 48), 2 + 2 * (i / 48), 1, 1}, 0);
        }
        for (const Area& hole : {Area(11, 50, 2, 1), Area(10, 51, 2, 1), Area(50, 55, 1, 1)}) {
            fill(mask, hole, 0);
        }
        return mask;
    };
    EXPECT_EQ(processed(withHoles(253)), textOf(withHoles(0)));
}

TEST_F(PostprocessTest, AddingStrokeKeepsTheRegionsThatItTouches) {
    startWhole(9, 4);
    setPrevious({"##.......", "##.......", "##.......", "........."});
    // Two new regions; the stroke runs over the old object, the background and one of them. What
    // the new mask lost stays.
    const Rows mask{"#..##....", "#.....##.", "#.....##.", "......##."};
    setStroke(stroke::kBrushAdd, {1, 1, 4, 0, 6, 2});
    EXPECT_EQ(processed(imageOf(mask)), (Rows{"##.##....", "##....##.", "##....##.", "......##."}));
    setStroke(stroke::kBrushAdd, {1, 1, 6, 2});
    EXPECT_EQ(processed(imageOf(mask))[0], "##.......");
}

TEST_F(PostprocessTest, RegionIsScaledToThePhotograph) {
    startBlue(8, 6);
    setRegion({1, 1, 2, 1});
    g_imageResizeFactor = 1.5F;  // column 1, 3 columns; row 1, 1 row
    const Rows expected = {"........", ".###....", "........", "........", "........", "........"};
    Rows shown(6, "........");
    shown[1] = "...#....";
    setPrevious(shown);
    setStroke(stroke::kLoopAdd, {});
    EXPECT_EQ(processed(imageOf(Rows(6, "###.####"))), expected);
    setPrevious(Rows(6, "........"));
    setStroke(stroke::kBrushAdd, {7, 5});
    EXPECT_EQ(processed(imageOf(Rows(6, "########"))), expected);
}

}  // namespace
