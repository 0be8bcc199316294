// Cleaning of a loop's mask.
#include "engine/engine_test.h"

namespace {

struct PostprocessTest : EngineTest {
    // An engine with a loop whose region is the whole photograph.
    void startLoop(int width, int height) {
        startBlue(width, height);
        setRegion({0, 0, width, height});
        setStroke(stroke::kLoopAdd, {});
    }
    static Rows processed(const ImagePtr& mask) {
        pHybrid->postProcess(mask.get());
        return textOf(mask);
    }
};

TEST_F(PostprocessTest, LoopLosesIslandsBelowATenthOfTheLargest) {
    startLoop(100, 40);
    // 1000 pixels, 100 and 99, none of them joined at more than a corner.
    const std::vector<Area> kept{{0, 0, 50, 20}, {50, 20, 10, 10}};
    EXPECT_EQ(processed(imageWith(100, 40, {kept[0], kept[1], {80, 20, 11, 9}}, 255)),
              textOf(imageWith(100, 40, kept, 255)));
}

TEST_F(PostprocessTest, LoopFillsHolesBelowFivePixels) {
    startLoop(12, 5);
    // Holes of 5 pixels (the first at the border), of 4, and two single ones joined by a corner.
    EXPECT_EQ(
        processed(imageOf(
            {".....#######", "##########.#", "#..##...###.", "#..##..#####", "############"})),
        (Rows{".....#######", "############", "#####...####", "#####..#####", "############"}));
}

TEST_F(PostprocessTest, LastNumberedHoleIsJudgedWithTheObjectInItsBox) {
    startLoop(100, 60);
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

}  // namespace
