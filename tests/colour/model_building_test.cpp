// Clustering, and the models made of clusters, raced against the same written down plainly in one
// thread.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <opencv2/core.hpp>

#include "colour/k_means.h"
#include "colour/model_init.h"
#include "colour/model_update.h"
#include "colour/samples.h"

namespace {

double squaredDistance(const pixelVal& a, const pixelVal& b) {
    return (a.ch0 - b.ch0) * (a.ch0 - b.ch0) + (a.ch1 - b.ch1) * (a.ch1 - b.ch1) +
           (a.ch2 - b.ch2) * (a.ch2 - b.ch2);
}

// Each seed is drawn with a chance that grows with the squared distance to the nearest seed so far.
std::vector<int> plainSeeds(const Samples& samples, int count) {
    const auto draw = [] { return std::rand() / 2147483648.0; };
    std::srand(static_cast<unsigned>(samples.size()));
    std::vector<int> seeds = {static_cast<int>(static_cast<double>(samples.size()) * draw())};
    while (static_cast<int>(seeds.size()) < count) {
        std::vector<double> nearest;
        double total = 0.0;
        for (const pixelVal& sample : samples) {
            double least = std::numeric_limits<double>::infinity();
            for (const int seed : seeds) {
                least = std::min(least,
                                 squaredDistance(sample, samples[static_cast<std::size_t>(seed)]));
            }
            nearest.push_back(least);
            total += least;
        }
        std::srand(static_cast<unsigned>(std::fmod(std::trunc(total), 4294967296.0)));
        double target = total * draw();
        std::size_t chosen = 0;
        for (; chosen + 1 < samples.size() && target > nearest[chosen]; ++chosen) {
            target -= nearest[chosen];
        }
        seeds.push_back(static_cast<int>(chosen));
    }
    return seeds;
}

std::vector<int> plainLabels(const Samples& samples, int maxIterations) {
    const std::vector<int> seeds = plainSeeds(samples, kComponents);
    const std::size_t quarter = samples.size() / 4;
    Samples centres;
    for (const int seed : seeds) {
        centres.push_back(samples[static_cast<std::size_t>(seed)]);
    }
    std::vector<int> labels(samples.size());
    double previous = std::numeric_limits<double>::max();
    for (int iteration = 1;; ++iteration) {
        // Errors are not whole numbers, so the order of their sum matters: by quarters.
        double errors[4] = {};
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const auto nearer = [&](const pixelVal& a, const pixelVal& b) {
                return squaredDistance(samples[i], a) < squaredDistance(samples[i], b);
            };
            const auto best = std::min_element(centres.begin(), centres.end(), nearer);
            labels[i] = static_cast<int>(best - centres.begin());
            errors[quarter == 0 ? 3 : std::min<std::size_t>(i / quarter, 3)] +=
                squaredDistance(samples[i], *best);
        }
        const std::vector<int> assigned = labels;
        for (int k = 0; k < kComponents; ++k) {
            const ClusterInfo info(assigned, samples);
            if (const double count = info.m_count[k]; count > 0) {
                centres[static_cast<std::size_t>(k)] = {
                    info.m_sum[0][k] / count, info.m_sum[1][k] / count, info.m_sum[2][k] / count};
            } else {
                labels[static_cast<std::size_t>(seeds[static_cast<std::size_t>(k)])] = k;
            }
        }
        const double error = ((errors[0] + errors[1]) + errors[2]) + errors[3];
        if (iteration >= maxIterations || error == previous) {
            return labels;
        }
        previous = error;
    }
}

std::vector<int> labelled(const Samples& samples, int maxIterations) {
    std::vector<int> labels(samples.size(), -1);
    Samples data = samples;
    Samples centres(kComponents);
    k_means(rowsOf(data).data(), labels.data(), static_cast<int>(samples.size()), 0.0,
            maxIterations, rowsOf(centres).data());
    return labels;
}

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

class ModelBuilding : public ColourTest {
  protected:
    ModelBuilding() {
        for (int k = 0; k < kComponents; ++k) {
            setComponent(marked, k, 0.01 * k, 7.0, 3.0);
        }
    }
    VORNSEColorModel marked;  // tells which components a builder left alone
};

}  // namespace

TEST(KMeans, LabelsLikeAPlainSequentialClustering) {
    std::mt19937 random(5);
    for (int round = 0; round < 120; ++round) {
        const std::size_t count = 5 + random() % 90;
        Samples samples = randomSamples(random, count, round % 3 == 0 ? 2 : 200);
        if (round % 4 == 0) {
            samples[3].ch1 = 1e5;  // a total of more than 32 bits
        }
        for (const int maxIterations : {1, 3, 10}) {
            std::srand(static_cast<unsigned>(round));  // seeds depend on the data alone
            ASSERT_EQ(labelled(samples, maxIterations), plainLabels(samples, maxIterations))
                << round << ' ' << maxIterations;
        }
    }
}

TEST(KMeans, IdenticalSamplesFillTheEmptyClustersInTurn) {
    EXPECT_EQ(labelled(Samples(5, {7, 8, 9}), 10), (std::vector<int>{4, 0, 0, 0, 0}));
}

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
    EXPECT_TRUE(sameBytes(model, marked));
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
