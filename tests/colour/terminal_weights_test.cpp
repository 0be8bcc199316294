#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

#include "colour/model_init.h"
#include "colour/samples.h"
#include "graph/parallel_gc.h"

namespace {

constexpr int kWidth = 11;
constexpr int kHeight = 7;
constexpr int kNodes = kWidth * kHeight;
constexpr double kHard = 1000.0;

class TerminalWeightsInBlocks : public ColourTest, public testing::WithParamInterface<int> {
  protected:
    TerminalWeightsInBlocks() {
        std::mt19937 random(3);
        for (VORNSEColorModel* model : {&first, &second}) {
            initModelWithKmeansVORN(randomSamples(random, 200, 60), *model);
            model->setInverseCovariance();
        }
        cv::randu(image, 0, 256);
        cv::randu(labels, 0, 4);
        graph.addNode(kNodes);
    }

    cv::Mat image = cv::Mat(kHeight, kWidth, CV_8UC3);
    cv::Mat labels = cv::Mat(kHeight, kWidth, CV_8UC1);
    VORNSEColorModel first;
    VORNSEColorModel second;
    VORNSEGraph graph{kNodes, 8 * kNodes, kWidth, kHeight, 0};
};

}  // namespace

TEST_P(TerminalWeightsInBlocks, MatchTheMixtureDensities) {
    ParallelGC solver(&graph, GetParam());
    solver.ComputeGMMProbsParallely(&image, &labels, kHard, 1, 2, &first, &second, &graph);
    double flow = 0.0;
    for (int node = 0; node < kNodes; ++node) {
        const int code = labels.data[node];
        const cv::Vec3d p = image.at<cv::Vec3b>(node / kWidth, node % kWidth);
        const pixelVal sample = {p[0], p[1], p[2]};
        const double source = code == 2   ? kHard
                              : code == 1 ? 0.0
                                          : -std::log(second.GMMProb(sample));
        const double sink = code == 1 ? kHard : code == 2 ? 0.0 : -std::log(first.GMMProb(sample));
        EXPECT_NEAR(static_cast<double>(graph.m_nodes[node].residualTerminalCap), source - sink,
                    1e-3);
        flow += std::min(source, sink);
    }
    EXPECT_NEAR(static_cast<double>(graph.m_flow), flow, 1e-2);
}

TEST_P(TerminalWeightsInBlocks, EqualCodesAreTheSourcesAndMisfitsChangeNothing) {
    ParallelGC solver(&graph, GetParam());
    labels.setTo(2);
    solver.ComputeGMMProbsParallely(&image, &labels, kHard, 2, 2, &first, &second, &graph);
    EXPECT_EQ(graph.m_nodes[kNodes - 1].residualTerminalCap, 1000.0F);
    cv::Mat small(kHeight, kWidth - 1, CV_8UC1);
    solver.ComputeGMMProbsParallely(&image, &small, 1.0, 1, 2, &first, &second, &graph);
    solver.ComputeGMMProbsParallely(nullptr, &labels, 1.0, 1, 2, &first, &second, &graph);
    EXPECT_EQ(takeErrors().size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Counts, TerminalWeightsInBlocks, testing::Values(1, 2, 4, 6, 7, 12));
