// The samples of an image, and their clustering, raced against the same written down plainly in one
// thread.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>

#include "colour/alternative_init.h"
#include "colour/k_means.h"
#include "colour/samples.h"
#include "colour/training_data.h"
#include "support/image_bytes.h"

namespace {

// Each seed is drawn with a chance that grows with the squared distance to the nearest seed so far.
std::vector<std::size_t> plainSeeds(const Samples& samples, std::size_t count) {
    const auto draw = [] { return std::rand() / 2147483648.0; };
    std::srand(static_cast<unsigned>(samples.size()));
    std::vector seeds{static_cast<std::size_t>(static_cast<double>(samples.size()) * draw())};
    std::vector<double> nearest(samples.size(), std::numeric_limits<double>::infinity());
    while (seeds.size() < count) {
        double total = 0.0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            nearest[i] = std::min(nearest[i], distSq(samples[i], samples[seeds.back()]));
            total += nearest[i];
        }
        std::srand(static_cast<unsigned>(std::fmod(std::trunc(total), 4294967296.0)));
        double target = total * draw();
        std::size_t chosen = 0;
        for (; chosen + 1 < samples.size() && target > nearest[chosen]; ++chosen) {
            target -= nearest[chosen];
        }
        seeds.push_back(chosen);
    }
    return seeds;
}

std::vector<int> plainLabels(const Samples& samples, int maxIterations) {
    const std::vector<std::size_t> seeds = plainSeeds(samples, kComponents);
    const std::size_t quarter = samples.size() / 4;
    Samples centres;
    for (const std::size_t seed : seeds) {
        centres.push_back(samples[seed]);
    }
    std::vector<int> labels(samples.size());
    double previous = std::numeric_limits<double>::max();
    for (int iteration = 1;; ++iteration) {
        // Errors are not whole numbers, so the order of their sum matters: by quarters.
        double errors[4] = {};
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const auto nearer = [&](const pixelVal& a, const pixelVal& b) {
                return distSq(samples[i], a) < distSq(samples[i], b);
            };
            const auto best = std::min_element(centres.begin(), centres.end(), nearer);
            labels[i] = static_cast<int>(best - centres.begin());
            errors[quarter == 0 ? 3 : std::min<std::size_t>(i / quarter, 3)] +=
                distSq(samples[i], *best);
        }
        const ClusterInfo info(labels, samples);
        for (std::size_t k = 0; k < centres.size(); ++k) {
            if (const double count = info.m_count[k]; count > 0) {
                centres[k] = {info.m_sum[0][k] / count, info.m_sum[1][k] / count,
                              info.m_sum[2][k] / count};
            } else {
                labels[seeds[k]] = static_cast<int>(k);
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

}  // namespace

TEST(KMeans, LabelsLikeAPlainSequentialClustering) {
    std::mt19937 random(5);
    for (int round = 0; round < 120; ++round) {
        const std::size_t count = 5 + random() % 90;
        Samples samples = randomSamples(random, count, round % 3 == 0 ? 1 + round % 2 : 200);
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

TEST(TrainingData, RoutesByLabelInRasterOrderAndFillsUpToFive) {
    Bytes bytes(4 * 2 * 3);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    const ImagePtr image = imageOf(4, 2, 3, bytes);
    Samples foreground{9, {1, 1, 1}};  // left over from before
    Samples background;
    const pixelVal filler = {10, 20, 30};
    const auto extract = [&](const Bytes& codes) {
        extractTrainingData(image.get(), imageOf(4, 2, 1, codes).get(), foreground, background);
    };
    extract({2, 0, 4, 3, 5, 2, 255, 0});
    EXPECT_EQ(foreground, (Samples{{0, 1, 2}, {6, 7, 8}, {15, 16, 17}, filler, filler}));
    EXPECT_EQ(background, (Samples{{9, 10, 11}, filler, filler, filler, filler}));
    extract({1, 3, 1, 3, 1, 3, 4, 0});
    EXPECT_EQ(background.size(), 6U);
    extractTrainingData(image.get(), nullptr, foreground, background);
    EXPECT_EQ(foreground, Samples(5, filler));
    EXPECT_EQ(background, Samples(5, filler));
}
