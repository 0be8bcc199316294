#include <gtest/gtest.h>
#include <cmath>
#include <opencv2/core.hpp>

#include "colour/alternative_init.h"
#include "colour/samples.h"
#include "support/image_bytes.h"

using AlternativeInit = ColourTest;

TEST_F(AlternativeInit, EmPassByHand) {
    // One component takes every sample whole, so a pass gives the plain mean and covariance. A
    // sample too far away for any density weighs nothing but is counted.
    VORNSEColorModel model;
    setComponent(model, 2, 0.5, 10.0, 100.0);
    prepare(model);
    const Samples samples = {{8, 0, 0},  {12, 0, 4}, {8, 6, 4},  {12, 6, 0},
                             {10, 3, 2}, {10, 3, 2}, {1e6, 0, 0}};
    const VORNSEColorModel before = model;
    model.EM(Samples(4), 3);  // too few
    EXPECT_TRUE(sameBytes(model, before));
    model.EM(samples, 1);
    EXPECT_DOUBLE_EQ(model.m_weight[2], 6.0 / 7.0);
    const double mean[] = {10, 3, 2};
    const double covariance[] = {16 / 6.0, 0, 0, 0, 6, 0, 0, 0, 16 / 6.0};
    for (int p = 0; p < 9; ++p) {
        EXPECT_NEAR(model.m_covariance[2][p], covariance[p], 1e-12);
        EXPECT_NEAR(model.m_mean[2][p / 3], mean[p / 3], 1e-12);
    }
    EXPECT_NEAR(model.m_determinant[2], 6.0 * 16 / 6.0 * 16 / 6.0, 1e-9);
    EXPECT_EQ(model.m_weight[0], 0.0);
    // Equal components share every sample by their weights. The first pass takes the determinants that
    // it finds, here that of 100 for both. No pass at all brings determinants and inverses up to date,
    // and two are one after the other.
    VORNSEColorModel twins;
    setComponent(twins, 0, 0.25, 10.0, 100.0);
    setComponent(twins, 1, 0.75, 10.0, 100.0);
    prepare(twins);
    setComponent(twins, 1, 0.75, 10.0, 1.0);
    VORNSEColorModel fresh = twins;
    twins.EM(samples, 1);
    EXPECT_DOUBLE_EQ(twins.m_weight[0], 0.25 * 6.0 / 7.0);
    fresh.EM(samples, 0);
    EXPECT_DOUBLE_EQ(fresh.m_determinant[1], 1.0);
    EXPECT_DOUBLE_EQ(fresh.m_inverseCovariance[1][0], 1.0);
    setComponent(twins, 1, 0.75, 12.0, 90.0);
    prepare(twins);
    VORNSEColorModel atOnce = twins;
    atOnce.EM(samples, 2);
    twins.EM(samples, 1);
    twins.EM(samples, 1);
    EXPECT_TRUE(sameBytes(atOnce, twins));
}

TEST_F(AlternativeInit, VarianceSplitByHand) {
    EXPECT_TRUE(order({0, 0, 0, std::nan("")}, {0, 0, 0, 2}));  // of the scores in the third start
    using Halves = std::pair<Samples, Samples>;
    const auto split = [](const Samples& in) {
        Halves halves;
        varPartition(in, halves.first, halves.second);
        return halves;
    };
    // Channel 1 spreads widest, its mean is 4; the value on the mean goes up.
    EXPECT_EQ(split({{1, 0, 0}, {2, 10, 0}, {3, 4, 1}, {1, 2, 0}}),
              (Halves{{{1, 0, 0}, {1, 2, 0}}, {{2, 10, 0}, {3, 4, 1}}}));
    EXPECT_EQ(g_maxVarDir, 1);
    // Equal channels: the first. Equal samples: all up, and the first one down as well.
    EXPECT_EQ(split(Samples(3, {5, 5, 5})), (Halves{{{5, 5, 5}}, Samples(3, {5, 5, 5})}));
    EXPECT_EQ(g_maxVarDir, 0);
    g_maxVarDir = 2;
    EXPECT_EQ(split({}), Halves());
    EXPECT_EQ(g_maxVarDir, 0);
}

TEST_F(AlternativeInit, VarianceSplittingFindsTheCentresInSplittingOrder) {
    Samples samples;
    for (const double value : {0.0, 10.0, 100.0, 130.0, 200.0, 250.0}) {
        samples.insert(samples.end(), 2, {value, 0, 0});
    }
    Samples centres(5);
    varParInit(samples, rowsOf(centres).data());
    // Mean 115 parts {0 10 100} from {130 200 250}; 193.3 takes 130 off the latter (2422 a sample
    // against 2022), 36.7 takes 100 off the former, 225 then halves {200 250}.
    EXPECT_EQ(centres, (Samples{{130, 0, 0}, {5, 0, 0}, {100, 0, 0}, {200, 0, 0}, {250, 0, 0}}));
}

TEST_F(AlternativeInit, UnlabelledPixelsAreSharedOutByTheirLikelihood) {
    // Rows of mixed background colours, then a row of unlabelled ones like them, one of strangers
    // and one between. The fourth channel is not read.
    cv::Mat4b pixels(19, 8);
    cv::RNG(1).fill(pixels, cv::RNG::UNIFORM, 80, 120);
    cv::Mat1b codes(pixels.size(), label::kBackground);
    codes.rowRange(8, 16).setTo(label::kProbableBackground);
    const int unlabelled[][2] = {
        {100, label::kFree}, {220, label::kObject}, {140, label::kProbableObject}};
    for (int row = 0; row < 3; ++row) {
        pixels.row(16 + row).setTo(cv::Scalar::all(unlabelled[row][0]));
        codes.row(16 + row).setTo(unlabelled[row][1]);
    }
    const IplImage image = cvIplImage(pixels);
    const IplImage labels = cvIplImage(codes);
    VORNSEColorModel models[2];
    cv::theRNG() = cv::RNG(77);
    initThirdInitalization(&image, &labels, models[0], models[1]);
    EXPECT_EQ(cv::theRNG().state, cv::RNG(77).state);
    const double means[] = {220.0, cv::mean(pixels.rowRange(0, 17))[2]};
    for (const int m : {0, 1}) {
        double mean = 0.0;
        for (int k = 0; k < kComponents; ++k) {
            mean += models[m].m_weight[k] * models[m].m_mean[k][2];
        }
        EXPECT_NEAR(mean, means[m], 1e-9);
    }

    // Without labels, or with labels that do not fit, both models stay.
    const VORNSEColorModel before[2] = {models[0], models[1]};
    initThirdInitalization(&image, nullptr, models[0], models[1]);
    EXPECT_TRUE(takeErrors().empty());
    initThirdInitalization(&image, createImage(4, 3, 1).get(), models[0], models[1]);
    EXPECT_EQ(takeErrors().size(), 1U);
    EXPECT_TRUE(sameBytes(models[0], before[0]) && sameBytes(models[1], before[1]));
}
