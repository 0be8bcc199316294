#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core/mat.hpp>

#include "colour/model_init.h"
#include "colour/samples.h"
#include "graph/parallel_gc.h"
#include "history/marker.h"
#include "support/log_capture.h"

namespace {

constexpr int kWidth = 11;
constexpr int kHeight = 7;
constexpr int kNodes = kWidth * kHeight;
constexpr float kHard = 1000.0F;

VORNSEColorModel trainedModel(unsigned seed) {
    std::mt19937 random(seed);
    VORNSEColorModel model;
    initModelWithKmeansVORN(randomSamples(random, 200, 60), model);
    model.setInverseCovariance();
    return model;
}

struct Weights {
    float source;
    float sink;
};

class TerminalWeights : public testing::Test {
  protected:
    void SetUp() override {
        VORNSEMarker::m_noiseLevel = 0.1;
        first = trainedModel(1);
        second = trainedModel(2);
        std::mt19937 random(3);
        for (int node = 0; node < kNodes; ++node) {
            labels.data[node] = static_cast<std::uint8_t>(random() % 4);
            for (int c = 0; c < 3; ++c) {
                image.data[3 * node + c] = static_cast<std::uint8_t>(random() % 256);
            }
        }
        graph.addNode(kNodes);
        clearLog();
    }

    // The definition in double precision: labels 2 are the source's, 1 the sink's.
    Weights expected(int node) const {
        const int code = labels.data[node];
        if (code == 1 || code == 2) {
            return {code == 2 ? kHard : 0.0F, code == 2 ? 0.0F : kHard};
        }
        const std::uint8_t* p = image.data + 3 * node;
        const pixelVal sample = {static_cast<double>(p[0]), static_cast<double>(p[1]),
                                 static_cast<double>(p[2])};
        return {static_cast<float>(-std::log(second.GMMProb(sample))),
                static_cast<float>(-std::log(first.GMMProb(sample)))};
    }

    cv::Mat image = cv::Mat(kHeight, kWidth, CV_8UC3);
    cv::Mat labels = cv::Mat(kHeight, kWidth, CV_8UC1);
    VORNSEColorModel first;
    VORNSEColorModel second;
    VORNSEGraph graph{kNodes, 8 * kNodes, kWidth, kHeight, 0};
};

class TerminalWeightsInBlocks : public TerminalWeights, public testing::WithParamInterface<int> {};

}  // namespace

TEST_P(TerminalWeightsInBlocks, MatchTheMixtureDensities) {
    ParallelGC solver(&graph, GetParam());
    solver.ComputeGMMProbsParallely(&image, &labels, 1000.0, 1, 2, &first, &second, &graph);
    double flow = 0.0;
    for (int node = 0; node < kNodes; ++node) {
        const Weights weights = expected(node);
        EXPECT_NEAR(graph.m_nodes[node].residualTerminalCap, weights.source - weights.sink, 1e-3F);
        flow += static_cast<double>(std::min(weights.source, weights.sink));
    }
    EXPECT_NEAR(static_cast<double>(graph.m_flow), flow, 1e-2);
}

TEST_P(TerminalWeightsInBlocks, ABlockTouchesItsOwnNodesOnly) {
    ParallelGC solver(&graph, GetParam());
    labels.setTo(2);
    // Equal codes: the source comes first.
    solver.ComputeGMMProbs(0, 0, &image, &labels, 1000.0, 2, 2, &first, &second, &graph);
    for (int node = 0; node < kNodes; ++node) {
        const bool inside =
            node % kWidth < solver.m_blockWidth && node / kWidth < solver.m_blockHeight;
        EXPECT_EQ(graph.m_nodes[node].residualTerminalCap, inside ? kHard : 0.0F);
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, TerminalWeightsInBlocks, testing::Values(1, 2, 4, 6, 7, 12));

TEST_F(TerminalWeights, UnfittingArgumentsChangeNothing) {
    ParallelGC solver(&graph, 4);
    cv::Mat small(kHeight, kWidth - 1, CV_8UC1);
    solver.ComputeGMMProbsParallely(&image, &small, 1.0, 1, 2, &first, &second, &graph);
    solver.ComputeGMMProbsParallely(nullptr, &labels, 1.0, 1, 2, &first, &second, &graph);
    EXPECT_EQ(takeErrors().size(), 2U);
    for (int node = 0; node < kNodes; ++node) {
        EXPECT_EQ(graph.m_nodes[node].residualTerminalCap, 0.0F);
    }
}
