#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

#include "colour/alternative_init.h"
#include "colour/samples.h"
#include "graph/parallel_gc.h"

using TerminalWeights = ColourTest;

TEST_F(TerminalWeights, OfEveryBlockMatchTheMixtureDensities) {
    constexpr int kWidth = 11;
    constexpr int kHeight = 7;
    constexpr int kNodes = kWidth * kHeight;
    constexpr double kHard = 1000.0;
    std::mt19937 random(3);
    VORNSEColorModel models[2];
    for (VORNSEColorModel& model : models) {
        initModelWithKmeans(randomSamples(random, 200, 60), model);
        model.setInverseCovariance();
    }
    cv::Mat image(kHeight, kWidth, CV_8UC3);
    cv::Mat labels(kHeight, kWidth, CV_8UC1);
    cv::randu(image, 0, 256);
    cv::randu(labels, 0, 4);
    for (const int blocks : {1, 2, 4, 6, 7, 12}) {
        for (const int sinkCode : {1, 2}) {  // equal codes are the sources
            VORNSEGraph graph(kNodes, 8 * kNodes, kWidth, kHeight, 0);
            graph.addNode(kNodes);
            ParallelGC solver(&graph, blocks);
            const auto compute = [&](cv::Mat* pixels, cv::Mat codes) {
                solver.ComputeGMMProbsParallely(pixels, &codes, kHard, sinkCode, 2, &models[0],
                                                &models[1], &graph);
            };
            compute(&image, labels);
            double flow = 0.0;
            for (int node = 0; node < kNodes; ++node) {
                const int code = labels.data[node];
                const cv::Vec3d p = image.at<cv::Vec3b>(node / kWidth, node % kWidth);
                const auto weight = [&](int own, int other, const VORNSEColorModel& model) {
                    return code == own     ? kHard
                           : code == other ? 0.0
                                           : -std::log(model.GMMProb({p[0], p[1], p[2]}));
                };
                const double source = weight(2, sinkCode, models[1]);
                const double sink = code == 2 ? 0.0 : weight(sinkCode, 2, models[0]);
                EXPECT_NEAR(static_cast<double>(graph.m_nodes[node].residualTerminalCap),
                            source - sink, 1e-3);
                flow += std::min(source, sink);
            }
            EXPECT_NEAR(static_cast<double>(graph.m_flow), flow, 1e-2);
            compute(&image, labels.colRange(1, kWidth));
            compute(nullptr, labels);
            EXPECT_EQ(takeErrors().size(), 2U);
        }
    }
}
