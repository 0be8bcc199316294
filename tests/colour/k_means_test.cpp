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
