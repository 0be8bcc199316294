#include "colour/k_means.h"

#include <gtest/gtest.h>

#include "colour/plain_k_means.h"

namespace {

std::vector<int> labelled(const Samples& samples, int maxIterations) {
    std::vector<int> labels(samples.size(), -1);
    SampleRows rows(samples);
    SampleRows centres{Samples(kComponents)};
    k_means(rows.pointers(), labels.data(), static_cast<int>(samples.size()), 0.0, maxIterations,
            centres.pointers());
    return labels;
}

std::vector<int> seedsOf(const Samples& samples) {
    std::vector<int> seeds(kComponents);
    SampleRows rows(samples);
    chooseCentersKMeanspp(rows.pointers(), static_cast<int>(samples.size()), kComponents,
                          seeds.data());
    return seeds;
}

}  // namespace

TEST(KMeans, LabelsLikeAPlainSequentialClustering) {
    std::mt19937 random(5);
    for (int round = 0; round < 120; ++round) {
        const std::size_t count = 5 + random() % 90;
        const Samples samples = randomSamples(random, count, round % 3 == 0 ? 2 : 200);
        for (const int maxIterations : {1, 3, 10}) {
            ASSERT_EQ(labelled(samples, maxIterations), plainLabels(samples, maxIterations))
                << round << ' ' << maxIterations;
        }
    }
}

TEST(KMeans, SeedsDependOnTheDataAlone) {
    std::mt19937 random(6);
    for (int round = 0; round < 60; ++round) {
        Samples samples = randomSamples(random, 5 + random() % 60, 200);
        if (round % 2 == 0) {
            samples[3].ch1 = 1e5;  // a total of more than 32 bits
        }
        const std::vector<int> expected = plainSeeds(samples, kComponents);
        std::srand(static_cast<unsigned>(round));
        EXPECT_EQ(seedsOf(samples), expected) << round;
        EXPECT_EQ(seedsOf(samples), expected) << round;
    }
}

TEST(KMeans, IdenticalSamplesFillTheEmptyClustersInTurn) {
    EXPECT_EQ(labelled(Samples(5, {7, 8, 9}), 10), (std::vector<int>{4, 0, 0, 0, 0}));
}
