#include <gtest/gtest.h>
#include <cmath>
#include <opencv2/core.hpp>

#include "colour/alternative_init.h"
#include "colour/color_model.h"
#include "colour/samples.h"
#include "graph/parallel_gc.h"

namespace {

using TerminalWeights = ColourTest;

struct ColorModel : ColourTest {
    static std::vector<double> nine(const double* matrix) { return {matrix, matrix + 9}; }

    VORNSEColorModel model;
};

}  // namespace

TEST_F(ColorModel, SingularComponentsAreRaisedStepByStep) {
    setComponent(model, 0, 1.0, 0.0, 0.0);
    setComponent(model, 1, 1.0, 0.0, 1.0);
    model.m_covariance[1][0] = -0.25;  // needs three steps of 0.1
    prepare(model);
    EXPECT_EQ(nine(model.m_covariance[0]), (std::vector<double>{0.1, 0, 0, 0, 0.1, 0, 0, 0, 0.1}));
    EXPECT_DOUBLE_EQ(model.m_invSqrtDeterminant[0], 1.0 / std::sqrt(0.001));
    EXPECT_NEAR(model.m_covariance[1][0], 0.05, 1e-15);
    EXPECT_NEAR(model.m_determinant[1], 0.05 * 1.3 * 1.3, 1e-14);
    for (const double noise : {0.0, -0.1}) {  // cannot help, but ends
        VORNSEMarker::m_noiseLevel = noise;
        VORNSEColorModel flat;
        setComponent(flat, 0, 1.0, 0.0, 0.0);
        prepare(flat);
        EXPECT_EQ(flat.GMMProb({0, 0, 0}), 0.0);
    }
}

TEST_F(ColorModel, EqualComponentsGoToTheFirstAndGreyReadsOneChannel) {
    for (int k = 0; k < kComponents; ++k) {
        setComponent(model, k, 0.2, 100.0, 4.0);
    }
    const double expected = std::exp(-0.5) / 2.0;    // two levels off at variance 4
    EXPECT_EQ(model.assignCluster({102, 7, 9}), 0);  // all alike: the first
    EXPECT_DOUBLE_EQ(model.gaussianProbGreyScale(3, {102, 7, 9}), expected);
    EXPECT_DOUBLE_EQ(model.GMMProbGreyScale({98, 200, 0}), expected);
}

TEST_F(ColorModel, CompactMeansCloseColoursOrDegenerateHeavyComponents) {
    const double nan = std::nan("");
    struct {
        double weights[2];
        double separation;  // of the means, in one channel
        double determinants[2];
        bool compact;
    } const cases[] = {
        {{1.0, 0.0}, 255.0, {0.5, 0.0}, true},   // no pair
        {{0.5, 0.05}, 255.0, {9.0, 9.0}, true},  // one too light for a pair
        {{0.5, 0.1}, 255.0, {9.0, 9.0}, false},
        {{0.5, 0.5}, 99.9, {9.0, 9.0}, true},   // close
        {{0.5, 0.5}, 100.0, {0.5, 0.5}, true},  // apart, both degenerate
        {{0.5, 0.5}, 100.0, {0.5, 1.0}, false},
        {{0.5, 0.5}, 100.0, {nan, 0.5}, true},
        {{0.35, 0.35}, 100.0, {0.5, 0.5}, false},  // none is heavy
        {{0.36, 0.35}, 100.0, {0.5, 9.0}, true},
        // A little less than 10000 in double precision, 10000 in single.
        {{0.5, 0.5}, 99.999999, {9.0, 9.0}, false},
    };
    for (const auto& c : cases) {
        for (const int k : {0, 1}) {
            setComponent(model, 3 * k, c.weights[k], 0.0, 0.0);
            model.m_determinant[3 * k] = c.determinants[k];
        }
        model.m_mean[3][1] = c.separation;
        EXPECT_EQ(model.colorModelCriteria(), c.compact) << &c - cases;
    }
}

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
