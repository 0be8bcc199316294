// VORNSEColorModel: the colour statistic of one region, a mixture of five three-dimensional
// Gaussians over colour samples.
//
// Whoever changes weights or covariances calls setDeterminant and then setInverseCovariance:
// densities are computed from what these two derive. The builders call setDeterminant themselves.
//
// Threads: a model may be read by several threads while none changes it.
#pragma once

#include <vector>

#include "support/export.h"

constexpr int kComponents = 5;
constexpr int kChannels = 3;

// A colour sample: the three channel bytes of a colour pixel, or (grey, horizontal texture,
// vertical texture) of a grey one; 0 to 255, unscaled.
struct pixelVal {
    double ch0;
    double ch1;
    double ch2;
};

// A plain block of doubles, copied and zeroed as one. Matrices are row-major. A component with
// weight 0 is absent: its derived fields are zero and so is its density.
class SEGCORE_API VORNSEColorModel {
  public:
    double m_weight[kComponents];
    double m_mean[kComponents][kChannels];
    double m_covariance[kComponents][kChannels * kChannels];
    double m_determinant[kComponents];
    double m_invSqrtDeterminant[kComponents];
    double m_inverseCovariance[kComponents][kChannels * kChannels];

    VORNSEColorModel();

    void setDeterminant();
    // Adds VORNSEMarker::m_noiseLevel to the diagonal of near-singular covariances until they can
    // be inverted, then inverts. Trusts the stored determinants. A noise level that cannot help
    // (not positive) leaves such a component out: determinant 0, density 0.
    void setInverseCovariance();

    // Density of component k (0 to 4) without weight and without the factor (2 pi)^(-3/2), which
    // cancels wherever two densities are compared. 0 for a component with determinant 0.
    double gaussianProb(int k, pixelVal x) const;
    // Weighted sum of the five densities; may be 0.
    double GMMProb(pixelVal x) const;
    // The same on ch0 alone; a zero variance is not guarded.
    double gaussianProbGreyScale(int k, pixelVal x) const;
    double GMMProbGreyScale(pixelVal x) const;

    // The component of the largest unweighted density, the lowest index on a tie.
    int assignCluster(pixelVal x) const;

    // True when the model is compact: means close together, or its heavy components
    // near-degenerate.
    bool colorModelCriteria() const;

    // Refines the model by `iterations` passes of soft expectation-maximisation. Determinants and
    // inverses must be up to date; they are again at the end, and without a pass they are all that
    // changes. Fewer than five samples change nothing.
    void EM(std::vector<pixelVal> samples, int iterations);
};

// Mixture density as a free function, for a sample and for three channel values.
SEGCORE_API double GMMProb(const VORNSEColorModel& model, pixelVal x);
SEGCORE_API double GMMProb(const VORNSEColorModel& model, double c0, double c1, double c2);

// Sufficient statistics of labelled samples: count, sums and sums of products (row-major pairs) for
// each component. Labels must lie in 0 .. 4.
struct SEGCORE_API ClusterInfo {
    int m_count[kComponents];
    double m_sum[kChannels][kComponents];
    double m_sumProduct[kChannels * kChannels][kComponents];

    ClusterInfo(std::vector<int> labels, std::vector<pixelVal> samples);
    ClusterInfo(const int* labels, const pixelVal* samples, std::size_t count);
};

// Sets weight, mean and covariance (divided by the count) of every component that has some of the
// `sampleCount` samples, and calls setDeterminant. The other components keep what they held, so
// weights need not sum to 1.
void estimateComponents(const ClusterInfo& statistics, std::size_t sampleCount,
                        VORNSEColorModel& model);
