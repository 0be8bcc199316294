#include "colour/alternative_init.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "colour/model_init.h"
#include "colour/samples.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log_capture.h"

static bool operator==(pixelVal a, pixelVal b) {
    return a.ch0 == b.ch0 && a.ch1 == b.ch1 && a.ch2 == b.ch2;
}

namespace {

class AlternativeInit : public testing::Test {
  protected:
    void SetUp() override { VORNSEMarker::m_noiseLevel = 0.1; }
};

bool sameBytes(const VORNSEColorModel& a, const VORNSEColorModel& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Five overlapping clouds, for as many components.
Samples clouds(unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> spread(0.0, 15.0);
    Samples samples;
    for (int i = 0; i < 1000; ++i) {
        const double centre = 40.0 * (1 + i % kComponents);
        samples.push_back({centre + spread(random), 200.0 - centre + 2.0 * spread(random),
                           90.0 + spread(random)});
    }
    return samples;
}

double logLikelihood(const VORNSEColorModel& model, const Samples& samples) {
    double sum = 0.0;
    for (const pixelVal& sample : samples) {
        sum += std::log(model.GMMProb(sample));
    }
    return sum;
}

VORNSEColorModel clusteredModel(const Samples& samples) {
    VORNSEColorModel model;
    initModelWithKmeansVORN(samples, model);
    model.setInverseCovariance();
    return model;
}

}  // namespace

TEST_F(AlternativeInit, EmNeverLowersTheLikelihood) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
        const Samples samples = clouds(seed);
        VORNSEColorModel model = clusteredModel(samples);
        double before = logLikelihood(model, samples);
        const double start = before;
        for (int pass = 0; pass < 40; ++pass) {
            model.EM(samples, 1);
            const double after = logLikelihood(model, samples);
            EXPECT_GE(after, before - 1e-9 * std::fabs(before)) << seed << ' ' << pass;
            before = after;
        }
        EXPECT_GT(before, start + 10.0);
        VORNSEColorModel atOnce = clusteredModel(samples);
        atOnce.EM(samples, 40);
        EXPECT_TRUE(sameBytes(atOnce, model));
    }
}

TEST_F(AlternativeInit, EmPassByHand) {
    // One component takes every sample whole, so a pass gives the plain mean and covariance.
    VORNSEColorModel model;
    setComponent(model, 2, 0.5, 10.0, 100.0);
    const Samples samples = {{8, 0, 0}, {12, 0, 4}, {8, 6, 4}, {12, 6, 0}, {10, 3, 2}, {10, 3, 2}};
    model.EM(samples, 1);
    EXPECT_DOUBLE_EQ(model.m_weight[2], 1.0);
    EXPECT_DOUBLE_EQ(model.m_mean[2][0], 10.0);
    EXPECT_DOUBLE_EQ(model.m_mean[2][1], 3.0);
    EXPECT_DOUBLE_EQ(model.m_mean[2][2], 2.0);
    const std::array<double, 9> covariance = {16 / 6.0, 0, 0, 0, 6, 0, 0, 0, 16 / 6.0};
    for (std::size_t p = 0; p < covariance.size(); ++p) {
        EXPECT_NEAR(model.m_covariance[2][p], covariance[p], 1e-12);
    }
    EXPECT_NEAR(model.m_determinant[2], 6.0 * 16 / 6.0 * 16 / 6.0, 1e-9);
    EXPECT_EQ(model.m_weight[0], 0.0);
    // A sample too far away for any density weighs nothing but is counted.
    Samples outlier = samples;
    outlier.push_back({1e6, 0, 0});
    model.EM(outlier, 1);
    EXPECT_DOUBLE_EQ(model.m_weight[2], 6.0 / 7.0);
    EXPECT_DOUBLE_EQ(model.m_mean[2][0], 10.0);
}

TEST_F(AlternativeInit, EmWithoutPassesOnlyPreparesTheModel) {
    VORNSEColorModel model;
    setComponent(model, 1, 1.0, 50.0, 4.0);
    VORNSEColorModel expected = model;
    model.EM(clouds(1), 0);
    expected.setDeterminant();
    expected.setInverseCovariance();
    EXPECT_TRUE(sameBytes(model, expected));
    setComponent(model, 1, 1.0, 50.0, 9.0);
    expected = model;
    model.EM(Samples(4), 3);
    EXPECT_TRUE(sameBytes(model, expected));
}

TEST_F(AlternativeInit, StatisticsByHand) {
    EXPECT_EQ(distSq({1, 2, 3}, {4, 6, 3}), 25.0);
    EXPECT_EQ(findMean({{1, 2, 3}, {3, 6, 5}}), (pixelVal{2, 4, 4}));
    EXPECT_EQ(findSSE({{1, 2, 3}, {3, 6, 5}}), 12.0);
    EXPECT_EQ(findMean({}), (pixelVal{0, 0, 0}));
    EXPECT_EQ(findSSE({}), 0.0);
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(order({0, 0, 0, 1}, {0, 0, 0, 2}));
    EXPECT_FALSE(order({0, 0, 0, 2}, {0, 0, 0, 2}));
    EXPECT_TRUE(order({0, 0, 0, none}, {0, 0, 0, 2}));
}

TEST_F(AlternativeInit, VarianceSplitByHand) {
    Samples low;
    Samples high;
    // Channel 1 spreads widest, its mean is 4; the value on the mean goes up.
    varPartition({{1, 0, 0}, {2, 10, 0}, {3, 4, 1}, {1, 2, 0}}, low, high);
    EXPECT_EQ(g_maxVarDir, 1);
    EXPECT_EQ(low, (Samples{{1, 0, 0}, {1, 2, 0}}));
    EXPECT_EQ(high, (Samples{{2, 10, 0}, {3, 4, 1}}));
    // Equal channels: the first. Equal samples: all up, and the first one down as well.
    low.clear();
    high.clear();
    varPartition(Samples(3, {5, 5, 5}), low, high);
    EXPECT_EQ(g_maxVarDir, 0);
    EXPECT_EQ(low.size(), 1U);
    EXPECT_EQ(high.size(), 3U);
    g_maxVarDir = 2;
    low.clear();
    varPartition({}, low, high);
    EXPECT_EQ(g_maxVarDir, 0);
    EXPECT_TRUE(low.empty());
}

TEST_F(AlternativeInit, VarianceSplittingFindsTheCentresInSplittingOrder) {
    Samples samples;
    for (const double value : {0.0, 10.0, 100.0, 130.0, 200.0, 250.0}) {
        samples.insert(samples.end(), 2, {value, 0, 0});
    }
    SampleRows centres(Samples(5));
    varParInit(samples, centres.pointers());
    // Mean 115 parts {0 10 100} from {130 200 250}; 193.3 takes 130 off the latter (2422 a sample
    // against 2022), 36.7 takes 100 off the former, 225 then halves {200 250}.
    const double expected[] = {130, 5, 100, 200, 250};
    for (int k = 0; k < 5; ++k) {
        EXPECT_DOUBLE_EQ(centres.pointers()[k][0], expected[k]) << k;
        EXPECT_EQ(centres.pointers()[k][1], 0.0);
    }
}

TEST_F(AlternativeInit, LibraryKmeansFindsSeparateColoursAndRepeats) {
    Samples samples;
    for (int i = 0; i < 50; ++i) {
        const double value = 50.0 * (i % 5);
        samples.push_back({value + i % 2, value, 250.0 - value});
    }
    VORNSEColorModel model;
    cv::theRNG() = cv::RNG(77);
    initModelWithKmeans(samples, model);
    EXPECT_EQ(cv::theRNG().state, cv::RNG(77).state);
    std::array<double, kComponents> means{};
    for (int k = 0; k < kComponents; ++k) {
        EXPECT_DOUBLE_EQ(model.m_weight[k], 0.2);
        EXPECT_NEAR(model.m_covariance[k][0], 0.25, 1e-9);
        means[static_cast<std::size_t>(k)] = model.m_mean[k][1];
    }
    std::sort(means.begin(), means.end());
    EXPECT_EQ(means, (std::array<double, 5>{0, 50, 100, 150, 200}));
    VORNSEColorModel again;
    VORNSEColorModel other;
    initModelWithKmeans(samples, samples, other, again);
    EXPECT_TRUE(sameBytes(model, again) && sameBytes(model, other));
    initModelWithKmeans(Samples(4), again);
    EXPECT_TRUE(sameBytes(model, again));
}

TEST_F(AlternativeInit, UnlabelledPixelsAreSharedOutByTheirLikelihood) {
    // Rows of mixed background colours, then a row of unlabelled ones like them, one of strangers
    // and one between.
    constexpr int kWidth = 8;
    constexpr int kBackgroundRows = 16;
    constexpr int kValues[] = {100, 220, 140};
    const ImagePtr image = createImage(kWidth, kBackgroundRows + 3, 3);
    const ImagePtr labels = createImage(kWidth, kBackgroundRows + 3, 1);
    std::mt19937 random(1);
    for (int y = 0; y < image->height; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const bool isBackground = y < kBackgroundRows;
            rowOf(labels.get(), y)[x] =
                static_cast<std::uint8_t>(isBackground ? 1 + 2 * (x % 2) : 2 * (x % 3));
            for (int c = 0; c < 3; ++c) {
                rowOf(image.get(), y)[3 * x + c] = static_cast<std::uint8_t>(
                    isBackground ? 80 + random() % 40 : kValues[y - kBackgroundRows] + x);
            }
        }
    }
    VORNSEColorModel first;
    VORNSEColorModel second;
    initThirdInitalization(image.get(), labels.get(), first, second);
    const auto range = [](const VORNSEColorModel& model) {
        double low = 255.0;
        double high = 0.0;
        double weight = 0.0;
        for (int k = 0; k < kComponents; ++k) {
            if (model.m_weight[k] > 0.0) {
                low = std::min(low, model.m_mean[k][0]);
                high = std::max(high, model.m_mean[k][0]);
                weight += model.m_weight[k];
            }
        }
        EXPECT_NEAR(weight, 1.0, 1e-12);
        return std::pair(low, high);
    };
    EXPECT_GE(range(first).first, 220.0);
    EXPECT_GE(range(second).first, 80.0);
    EXPECT_LE(range(second).second, 120.0);
}

TEST_F(AlternativeInit, ThirdInitialisationNeedsLabelsThatFit) {
    const ImagePtr image = createImage(4, 4, 3);
    const ImagePtr labels = createImage(4, 3, 1);
    VORNSEColorModel first = clusteredModel(clouds(1));
    VORNSEColorModel second = first;
    const VORNSEColorModel before = first;
    clearLog();
    initThirdInitalization(image.get(), nullptr, first, second);
    EXPECT_TRUE(takeErrors().empty());
    initThirdInitalization(image.get(), labels.get(), first, second);
    EXPECT_EQ(takeErrors().size(), 1U);
    EXPECT_TRUE(sameBytes(first, before) && sameBytes(second, before));
}
