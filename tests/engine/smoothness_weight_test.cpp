// Choice of the smoothness weight from trial label images, and when the first pass of a request
// comes back.
#include <array>

#include "engine/engine_test.h"

namespace {

struct SmoothnessWeightTest : EngineTest {
    // A flat square region: every object with an inside passes the contrast test.
    VORNSEHybrid& startFlat(int size, std::uint32_t word = kBlueWord) {
        VORNSEHybrid& engine = start(size, size, [=](int, int) { return word; });
        setRegion({0, 0, size, size});
        engine.m_cropImage = engine.cropImage(VORNSEMarker::m_srcImage);
        engine.m_cropLabel = imageWith(size, size, {}, 0).release();
        engine.m_startLabel = imageWith(size, size, {{0, 0, 1, 1}}, 3).release();
        return engine;
    }
    static void setTrials(const std::array<std::vector<Area>, 3>& objects) {
        for (std::size_t i = 0; i < 3; ++i) {
            releaseImage(pHybrid->m_trialLabels[i]);
            pHybrid->m_trialLabels[i] =
                imageWith(pHybrid->m_cropWidth, pHybrid->m_cropHeight, objects[i], 4).release();
        }
    }
    static int choose(const std::array<std::vector<Area>, 3>& objects) {
        setTrials(objects);
        return pHybrid->optimalLamda(pHybrid->m_trialLabels, nullptr);
    }
    static int intensity(const Rows& mask) { return pHybrid->intensityTest(imageOf(mask).get()); }
};

TEST_F(SmoothnessWeightTest, TrialsCutTheStartLabelsWithWholeWeights) {
    // Three trials, the fallback because none is valid, and the refinement.
    const double weights[][5] = {{50.0, 13.0, 8.0, 4.0, 4.0}, {15.0, 10.0, 7.0, 3.0, 3.0}};
    const int modes[] = {0, 2, 2, 2, 1};
    for (const bool grey : {false, true}) {
        VORNSEHybrid& engine = startFlat(40, grey ? greyWord(90) : kBlueWord);
        setTrials({{{{10, 10, 9, 9}}, {{10, 10, 9, 9}}, {{10, 10, 9, 9}}}});
        for (int pass = 0; pass < 5; ++pass) {
            cvSetZero(engine.m_cropLabel);
            EXPECT_EQ(engine.parallelLamdaSwtich(pass), modes[pass]);
            EXPECT_EQ(engine.m_lambda, weights[grey][pass]);
            EXPECT_EQ(textOf(engine.m_cropLabel),
                      pass < 4 ? textOf(engine.m_startLabel) : Rows(40, std::string(40, '.')));
        }
    }
}

TEST_F(SmoothnessWeightTest, ChosenTrialComesBackAndItsWeightKeepsItsFraction) {
    VORNSEHybrid& engine = startFlat(40);
    setTrials({{{}, {{10, 10, 20, 20}}, {{10, 10, 20, 19}}}});
    EXPECT_EQ(engine.parallelLamdaSwtich(3), 1);
    EXPECT_EQ(engine.m_lambda, 13.512999534606934);
    EXPECT_EQ(textOf(engine.m_cropLabel), textOf(engine.m_trialLabels[1]));
}

TEST_F(SmoothnessWeightTest, AreasAndTheFrameDecideInAFlatRegion) {
    startFlat(40);
    const std::vector<Area> large{{10, 10, 20, 20}};
    // The frame of a 40 x 40 region: first line below 6, last line above 34.
    const std::vector<Area> frame{{5, 5, 31, 31}};
    // A second component in the corner completes the frame when it is kept: 71 of 100 pixels.
    const std::vector<Area> dropped{{5, 5, 10, 10}, {29, 29, 7, 10}};
    std::vector<Area> kept = dropped;
    kept.push_back({28, 30, 1, 1});
    const struct {
        std::array<std::vector<Area>, 3> objects;
        int chosen;
    } cases[] = {
        // Areas that agree: the last but one.
        {{{{}, large, {{10, 10, 20, 19}}}}, 1},
        {{{large, large, large}}, 1},
        {{{{}, {}, large}}, 2},
        {{{large, {}, {}}}, 0},
        {{{{{10, 10, 9, 11}}, {{10, 10, 9, 11}}, {}}}, -1},  // below 100 pixels
        {{{{{10, 10, 10, 10}}, {{10, 10, 9, 11}}, {}}}, 0},
        // Ratio r of two areas: the variance is (1 - r)^2 / 2, 0.405 for a tenth, 0.396 for 0.11.
        {{{large, {{10, 10, 10, 4}}, {}}}, 1},
        {{{large, {{10, 10, 11, 4}}, {}}}, 0},
        {{{large, large, frame}}, 2},
        {{{frame, large, large}}, 0},
        {{{{{6, 5, 30, 31}}, large, large}}, 1},
        {{{{{5, 5, 30, 31}}, large, large}}, 1},
        {{{{{4, 4, 32, 32}}, frame, frame}}, 1},  // the smaller of two, the earlier of equals
        {{{kept, large, large}}, 0},
        {{{dropped, large, large}}, 1},
        {{{{}, {}, {}}}, 0},  // none passes the contrast test
    };
    for (const auto& c : cases) {
        EXPECT_EQ(choose(c.objects), c.chosen) << &c - cases;
    }
}

TEST_F(SmoothnessWeightTest, ContrastAcrossTheOutlineIsComparedWithThatInside) {
    VORNSEHybrid& engine = startFlat(4);
    const Rows pair{"....", ".##.", "....", "...."};
    const auto paint = [&](int x, int y) {
        rowOf(engine.m_cropImage, y)[3 * x] = 3;
        rowOf(engine.m_cropImage, y)[3 * x + 1] = 4;
    };
    cvSetZero(engine.m_cropImage);
    EXPECT_EQ(intensity(pair), 1);  // 0 and 0
    paint(1, 1);
    // Outline: 7 distances of 5 and 7 of 0; inside: 2 of 5.
    EXPECT_EQ(intensity(pair), 2);
    paint(2, 1);
    EXPECT_EQ(intensity(pair), 1);
    // No inside, no outline, nothing at all, nothing off the border: not a number, which fails.
    EXPECT_EQ(intensity({"....", ".#..", "....", "...."}), 2);
    EXPECT_EQ(intensity({"####", "....", "....", "...."}), 2);
}

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
