// When the first pass of a request comes back.
#include "engine/engine_test.h"

namespace {

using DriverTest = EngineTest;

TEST_F(DriverTest, FirstPassComesBackWhenItsOutlineIsTheBetter) {
    // A bright square: labels on its edge score 1, labels in the flat score -1.
    const Area onEdge{10, 10, 20, 20};
    VORNSEHybrid& engine = start(
        40, 40, [&](int x, int y) { return onEdge.contains(cv::Point(x, y)) ? 0xF0F0F0U : 0U; });
    setRegion({0, 0, 40, 40});
    engine.m_cropImage = engine.cropImage(VORNSEMarker::m_srcImage);
    const Area inside{15, 15, 10, 10};
    const auto chosen = [&](const std::vector<Area>& first, const std::vector<Area>& final) {
        releaseImage(engine.m_trialLabels[0]);
        releaseImage(engine.m_cropLabel);
        engine.m_trialLabels[0] = imageWith(40, 40, first, 4).release();
        engine.m_cropLabel = imageWith(40, 40, final, 2).release();
        engine.chooseIter();
        return textOf(engine.m_cropLabel) == textOf(engine.m_trialLabels[0]);
    };
    EXPECT_TRUE(chosen({onEdge}, {inside}));
    EXPECT_TRUE(chosen({onEdge}, {}));         // nothing left: no score, which gives way
    EXPECT_FALSE(chosen({onEdge}, {onEdge}));  // 1 is above 0.98
    EXPECT_FALSE(chosen({}, {inside}));
    // 76 outline pixels on the edge; n stray ones in the flat give (76 - n) / (76 + n).
    const std::vector<Area> strays{onEdge, {2, 2, 1, 10}};  // 66 / 86 = 0.767
    const std::vector<Area> more{onEdge, {2, 2, 1, 11}};    // 65 / 87 = 0.747
    const std::vector<Area> fewer{onEdge, {2, 2, 1, 1}};    // 75 / 77 = 0.974, a gain of 0.207
    const std::vector<Area> some{onEdge, {2, 2, 1, 2}};     // 74 / 78 = 0.949, a gain of 0.181
    EXPECT_TRUE(chosen(strays, some));
    EXPECT_FALSE(chosen(strays, fewer));
    EXPECT_FALSE(chosen(more, strays));
    EXPECT_TRUE(chosen({onEdge}, fewer));
}

}  // namespace
