#include "colour/color_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "colour/samples.h"

namespace {

class ColorModel : public ColourTest {
  protected:
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
        {{0.5, 0.5}, 99.9, {9.0, 9.0}, true},    // close
        {{0.5, 0.5}, 100.0, {0.5, 0.5}, true},   // apart, both degenerate
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
