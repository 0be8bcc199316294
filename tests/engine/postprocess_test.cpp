// Cleaning of a mask by the kind of the mark, and its merge with the previous result.
#include "engine/engine_test.h"

namespace {

class PostprocessTest : public EngineTest {
  protected:
    VORNSEHybrid& startRegion(int width, int height, const Area& region) {
        VORNSEHybrid& engine = startBlue(width, height);
        setRegion(region);
        return engine;
    }
    static Rows processed(const Rows& rows) {
        const ImagePtr mask = imageOf(rows);
        pHybrid->postProcess(mask.get());
        return textOf(mask.get());
    }
    static void setPrevious(const Rows& rows) {
        releaseImage(VORNSEMarker::m_prevResult);
        VORNSEMarker::m_prevResult = imageOf(rows).release();
    }
};

TEST_F(PostprocessTest, LoopLosesIslandsBelowATenthOfTheLargest) {
    VORNSEHybrid& engine = startRegion(100, 40, {0, 0, 100, 40});
    setStroke(stroke::kLoopAdd, {});
    // 1000 pixels, 100 and 99, none of them joined at more than a corner.
    ImagePtr mask = imageWith(100, 40, {{0, 0, 50, 20}, {50, 20, 10, 10}, {80, 20, 11, 9}}, 255);
    engine.postProcess(mask.get());
    const ImagePtr expected = imageWith(100, 40, {{0, 0, 50, 20}, {50, 20, 10, 10}}, 255);
    EXPECT_EQ(textOf(mask.get()), textOf(expected.get()));
}

TEST_F(PostprocessTest, LoopFillsHolesBelowFivePixels) {
    startRegion(12, 5, {0, 0, 12, 5});
    setStroke(stroke::kLoopAdd, {});
    // Holes of 5 pixels (the first at the border), of 4, and two single ones joined by a corner.
    EXPECT_EQ(
        processed({".....#######", "##########.#", "#..##...###.", "#..##..#####", "############"}),
        (Rows{".....#######", "############", "#####...####", "#####..#####", "############"}));
}

TEST_F(PostprocessTest, LastNumberedHoleIsJudgedWithTheObjectInItsBox) {
    VORNSEHybrid& engine = startRegion(100, 60, {0, 0, 100, 60});
    setStroke(stroke::kLoopAdd, {});
    // 253 single holes, then an S of four pixels: its number is 255, as the object's, so the six
    // pixels of its box count. One more single hole has no number left.
    const auto withHoles = [](int first, int count) {
        ImagePtr mask = imageWith(100, 60, {{0, 0, 100, 60}}, 255);
        for (int i = first; i < count; ++i) {
            rowOf(mask.get(), 2 + 2 * (i / 48))[2 + 2 * (i % 48)] = 0;
        }
        for (const auto& [x, y] : {std::pair{11, 50}, {12, 50}, {10, 51}, {11, 51}, {50, 55}}) {
            rowOf(mask.get(), y)[x] = 0;
        }
        return mask;
    };
    const ImagePtr mask = withHoles(0, 253);
    engine.postProcess(mask.get());
    EXPECT_EQ(textOf(mask.get()), textOf(withHoles(0, 0).get()));
}

TEST_F(PostprocessTest, AddingStrokeKeepsTheRegionsThatItTouches) {
    startRegion(9, 4, {0, 0, 9, 4});
    setPrevious({"##.......", "##.......", "##.......", "........."});
    // Two new regions; the stroke runs over the old object, the background and one of them. What
    // the new mask lost stays.
    setStroke(stroke::kBrushAdd, {1, 1, 4, 0, 6, 2});
    EXPECT_EQ(processed({"#..##....", "#.....##.", "#.....##.", "......##."}),
              (Rows{"##.##....", "##....##.", "##....##.", "......##."}));
    setStroke(stroke::kBrushAdd, {1, 1, 6, 2});
    EXPECT_EQ(processed({"#..##....", "#.....##.", "#.....##.", "......##."}),
              (Rows{"##.......", "##....##.", "##....##.", "......##."}));
    setStroke(stroke::kBrushAdd, {});
    EXPECT_EQ(processed({"#..##....", "#.....##.", "#.....##.", "......##."})[1], "##.......");
}

TEST_F(PostprocessTest, RemovingStrokeOnlyRemoves) {
    startRegion(9, 3, {0, 0, 9, 3});
    setPrevious({"########.", "########.", "########."});
    setStroke(stroke::kBrushRemove, {8, 0, 1, 1});
    // Lost on the left (touched) and in the middle (not), gained on the right (touched, ignored).
    EXPECT_EQ(processed({"..##..###", "..##..###", "#########"}),
              (Rows{"..######.", "..######.", "########."}));
}

TEST_F(PostprocessTest, LoopsMergeInTheirDirection) {
    startRegion(8, 3, {0, 0, 8, 3});
    setPrevious(Rows(3, "####...."));
    setStroke(stroke::kLoopAdd, {});
    EXPECT_EQ(processed(Rows(3, "..####..")), Rows(3, "######.."));
    setStroke(stroke::kLoopRemove, {});
    EXPECT_EQ(processed(Rows(3, "..####..")), Rows(3, "..##...."));
}

TEST_F(PostprocessTest, RegionIsScaledToThePhotograph) {
    startRegion(8, 6, {1, 1, 2, 1});
    g_imageResizeFactor = 1.5F;  // column 1, 3 columns; row 1, 1 row
    setPrevious(Rows(6, "........"));
    setStroke(stroke::kLoopAdd, {});
    EXPECT_EQ(processed(Rows(6, "########")),
              (Rows{"........", ".###....", "........", "........", "........", "........"}));
}

}  // namespace
