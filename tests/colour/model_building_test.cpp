#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <opencv2/core.hpp>

#include "colour/model_init.h"
#include "colour/model_update.h"
#include "colour/plain_k_means.h"
#include "history/marker.h"
#include "support/log_capture.h"

namespace {

// Expects the plain two-pass estimate in every labelled component and `before` in the others.
void expectEstimate(const VORNSEColorModel& model, const VORNSEColorModel& before,
                    const Samples& samples, const std::vector<int>& labels) {
    for (int k = 0; k < kComponents; ++k) {
        std::vector<cv::Vec3d> members;
        for (std::size_t s = 0; s < samples.size(); ++s) {
            if (labels[s] == k) {
                members.emplace_back(samples[s].ch0, samples[s].ch1, samples[s].ch2);
            }
        }
        double weight = before.m_weight[k];
        cv::Vec3d mean(before.m_mean[k]);
        cv::Matx33d covariance(before.m_covariance[k]);
        if (const auto count = static_cast<double>(members.size()); count > 0.0) {
            weight = count / static_cast<double>(samples.size());
            mean = std::accumulate(members.begin(), members.end(), cv::Vec3d()) / count;
            covariance = cv::Matx33d::zeros();
            for (const cv::Vec3d& x : members) {
                covariance += (x - mean) * (x - mean).t() * (1.0 / count);
            }
        }
        EXPECT_EQ(model.m_weight[k], weight);
        EXPECT_LT(cv::norm(cv::Vec3d(model.m_mean[k]) - mean), 1e-9);
        EXPECT_LT(cv::norm(cv::Matx33d(model.m_covariance[k]) - covariance), 1e-8);
        EXPECT_NEAR(model.m_determinant[k], cv::determinant(covariance),
                    1e-9 + 1e-12 * std::pow(cv::trace(covariance), 3));
    }
}

class ModelBuilding : public testing::Test {
  protected:
    void SetUp() override {
        VORNSEMarker::m_noiseLevel = 0.1;
        for (int k = 0; k < kComponents; ++k) {
            setComponent(marked, k, 0.01 * k, 7.0, 3.0);
        }
    }
    VORNSEColorModel marked;  // tells which components a builder left alone
};

}  // namespace

TEST_F(ModelBuilding, InitialisationEstimatesEveryClusterOnce) {
    std::mt19937 random(7);
    for (const unsigned distinct : {2U, 3U, 200U}) {
        const Samples a = randomSamples(random, 61, distinct);
        const Samples b = randomSamples(random, 5, distinct);
        VORNSEColorModel modelA = marked;
        VORNSEColorModel modelB = marked;
        initModel(a, b, modelA, modelB, 10);
        expectEstimate(modelA, marked, a, plainLabels(a, 10));
        expectEstimate(modelB, marked, b, plainLabels(b, 10));
    }
    VORNSEColorModel model = marked;
    initModelWithKmeansVORN(Samples(4, {1, 2, 3}), model);  // too few
    EXPECT_EQ(std::memcmp(&model, &marked, sizeof model), 0);
}

TEST_F(ModelBuilding, AnUpdateReassignsUnderTheOldModel) {
    std::mt19937 random(8);
    const Samples a = randomSamples(random, 200, 200);
    const Samples b = randomSamples(random, 80, 3);
    VORNSEColorModel before[2];
    initModel(a, b, before[0], before[1], 10);
    before[0].setInverseCovariance();
    before[1].setInverseCovariance();
    VORNSEColorModel after[2] = {before[0], before[1]};
    clearLog();
    updateModel(a, b, after[0], after[1]);
    EXPECT_EQ(takeLog(), Log{});
    for (const int m : {0, 1}) {
        const Samples& samples = m == 0 ? a : b;
        std::vector<int> labels;
        for (const pixelVal& sample : samples) {
            labels.push_back(before[m].assignCluster(sample));
        }
        expectEstimate(after[m], before[m], samples, labels);
        EXPECT_TRUE(std::equal(&before[m].m_inverseCovariance[0][0],
                               &before[m].m_inverseCovariance[0][0] + 45,
                               &after[m].m_inverseCovariance[0][0]));
    }
}

TEST_F(ModelBuilding, WithoutDensitiesTheFirstComponentTakesEverySample) {
    VORNSEColorModel model = marked;
    const Samples samples = {{1, 2, 3}, {3, 2, 5}};
    updateModel(samples, model);
    EXPECT_EQ(model.m_weight[0], 1.0);
    expectEstimate(model, marked, samples, {0, 0});
    const VORNSEColorModel before = model;
    updateModel({}, model);
    expectEstimate(model, before, {}, {});
}
