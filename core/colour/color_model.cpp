// The mixture model: evaluation, regularisation and the maximum-likelihood estimate from labelled
// samples. Invariant after setInverseCovariance: a present component has a determinant above the
// machine epsilon and the exact adjugate inverse of its (possibly raised) covariance; an absent one
// has zeros.
#include "colour/color_model.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "history/marker.h"

namespace {

constexpr double kSingular = std::numeric_limits<double>::epsilon();
// Below the logarithm of half the smallest denormal number the exponential is exactly 0.
constexpr double kVanishing = -746.0;
constexpr double kPairWeight = 0.05;            // lighter components do not count as a colour
constexpr float kSeparation = 10000.0F;         // squared distance of means: 100 levels
constexpr double kDominantWeight = 0.35;        // a component that carries the model
constexpr double kDegenerateDeterminant = 1.0;  // below: near-degenerate

double determinantOf(const double* c) {
    return c[0] * (c[4] * c[8] - c[5] * c[7]) - c[1] * (c[3] * c[8] - c[5] * c[6]) +
           c[2] * (c[3] * c[7] - c[4] * c[6]);
}

void invert(const double* c, double determinant, double* inverse) {
    inverse[0] = (c[4] * c[8] - c[7] * c[5]) / determinant;
    inverse[1] = (c[2] * c[7] - c[1] * c[8]) / determinant;
    inverse[2] = (c[1] * c[5] - c[2] * c[4]) / determinant;
    inverse[3] = (c[5] * c[6] - c[3] * c[8]) / determinant;
    inverse[4] = (c[0] * c[8] - c[6] * c[2]) / determinant;
    inverse[5] = (c[2] * c[3] - c[0] * c[5]) / determinant;
    inverse[6] = (c[3] * c[7] - c[6] * c[4]) / determinant;
    inverse[7] = (c[6] * c[1] - c[0] * c[7]) / determinant;
    inverse[8] = (c[0] * c[4] - c[3] * c[1]) / determinant;
}

}  // namespace

VORNSEColorModel::VORNSEColorModel()
    : m_weight{},
      m_mean{},
      m_covariance{},
      m_determinant{},
      m_invSqrtDeterminant{},
      m_inverseCovariance{} {
    setDeterminant();
    setInverseCovariance();
}

void VORNSEColorModel::setDeterminant() {
    for (int k = 0; k < kComponents; ++k) {
        if (m_weight[k] > 0.0) {
            m_determinant[k] = determinantOf(m_covariance[k]);
            if (m_determinant[k] != 0.0) {
                m_invSqrtDeterminant[k] = 1.0 / std::sqrt(m_determinant[k]);
            }
        } else {
            m_determinant[k] = 0.0;
            m_invSqrtDeterminant[k] = 0.0;
        }
    }
}

void VORNSEColorModel::setInverseCovariance() {
    const double noise = VORNSEMarker::m_noiseLevel;
    for (int k = 0; k < kComponents; ++k) {
        if (!(m_weight[k] > 0.0)) {
            std::fill(std::begin(m_inverseCovariance[k]), std::end(m_inverseCovariance[k]), 0.0);
            continue;
        }
        double* covariance = m_covariance[k];
        while (!(m_determinant[k] > kSingular)) {
            const double before = covariance[0];
            covariance[0] += noise;
            covariance[4] += noise;
            covariance[8] += noise;
            if (!(covariance[0] > before)) {
                // Raising the diagonal has no effect any more (a noise level that is not positive,
                // or a covariance that is not finite): the component cannot be repaired.
                m_determinant[k] = 0.0;
                m_invSqrtDeterminant[k] = 0.0;
                break;
            }
            m_determinant[k] = determinantOf(covariance);
            if (m_determinant[k] != 0.0) {
                m_invSqrtDeterminant[k] = 1.0 / std::sqrt(m_determinant[k]);
            }
        }
        if (m_determinant[k] > kSingular) {
            invert(covariance, m_determinant[k], m_inverseCovariance[k]);
        } else {
            std::fill(std::begin(m_inverseCovariance[k]), std::end(m_inverseCovariance[k]), 0.0);
        }
    }
}

double VORNSEColorModel::gaussianProb(int k, pixelVal x) const {
    if (m_determinant[k] == 0.0) {
        return 0.0;
    }
    const double d[kChannels] = {x.ch0 - m_mean[k][0], x.ch1 - m_mean[k][1], x.ch2 - m_mean[k][2]};
    double q = 0.0;
    for (int i = 0; i < kChannels; ++i) {
        for (int j = 0; j < kChannels; ++j) {
            q += (d[i] * m_inverseCovariance[k][kChannels * i + j]) * d[j];
        }
    }
    const double exponent = -0.5 * q;
    const double bell = exponent < kVanishing ? 0.0 : std::exp(exponent);
    return bell * m_invSqrtDeterminant[k];
}

double VORNSEColorModel::GMMProb(pixelVal x) const {
    double density = 0.0;
    for (int k = 0; k < kComponents; ++k) {
        density += m_weight[k] * gaussianProb(k, x);
    }
    return density;
}

double VORNSEColorModel::gaussianProbGreyScale(int k, pixelVal x) const {
    const double variance = m_covariance[k][0];
    const double d = x.ch0 - m_mean[k][0];
    return std::exp(-0.5 * (d * d) / variance) / std::sqrt(variance);
}

double VORNSEColorModel::GMMProbGreyScale(pixelVal x) const {
    double density = 0.0;
    for (int k = 0; k < kComponents; ++k) {
        density += m_weight[k] * gaussianProbGreyScale(k, x);
    }
    return density;
}

int VORNSEColorModel::assignCluster(pixelVal x) const {
    int best = 0;
    double bestDensity = gaussianProb(0, x);
    for (int k = 1; k < kComponents; ++k) {
        const double density = gaussianProb(k, x);
        if (density > bestDensity) {
            bestDensity = density;
            best = k;
        }
    }
    return best;
}

bool VORNSEColorModel::colorModelCriteria() const {
    float largest = -1.0F;
    for (int i = 0; i < kComponents; ++i) {
        for (int j = i + 1; j < kComponents; ++j) {
            if (!(m_weight[i] > kPairWeight) || !(m_weight[j] > kPairWeight)) {
                continue;
            }
            double squared = 0.0;
            for (int c = 0; c < kChannels; ++c) {
                const double d = m_mean[i][c] - m_mean[j][c];
                squared += d * d;
            }
            largest = std::max(largest, static_cast<float>(squared));
        }
    }
    if (largest < kSeparation) {
        return true;
    }
    int dominant = 0;
    int degenerate = 0;
    for (int k = 0; k < kComponents; ++k) {
        if (m_weight[k] > kDominantWeight) {
            ++dominant;
            // Negated so that a determinant that is not a number counts as degenerate.
            if (!(m_determinant[k] >= kDegenerateDeterminant)) {
                ++degenerate;
            }
        }
    }
    return dominant > 0 && degenerate == dominant;
}

double GMMProb(const VORNSEColorModel& model, pixelVal x) {
    return model.GMMProb(x);
}

double GMMProb(const VORNSEColorModel& model, double c0, double c1, double c2) {
    return model.GMMProb({c0, c1, c2});
}

ClusterInfo::ClusterInfo(std::vector<int> labels, std::vector<pixelVal> samples)
    : ClusterInfo(labels.data(), samples.data(), samples.size()) {}

ClusterInfo::ClusterInfo(const int* labels, const pixelVal* samples, std::size_t count)
    : m_count{}, m_sum{}, m_sumProduct{} {
    for (std::size_t s = 0; s < count; ++s) {
        const int k = labels[s];
        const double value[kChannels] = {samples[s].ch0, samples[s].ch1, samples[s].ch2};
        ++m_count[k];
        for (int i = 0; i < kChannels; ++i) {
            m_sum[i][k] += value[i];
            for (int j = 0; j < kChannels; ++j) {
                m_sumProduct[kChannels * i + j][k] += value[i] * value[j];
            }
        }
    }
}

void estimateComponents(const ClusterInfo& statistics, std::size_t sampleCount,
                        VORNSEColorModel& model) {
    for (int k = 0; k < kComponents; ++k) {
        const double count = statistics.m_count[k];
        if (statistics.m_count[k] < 1) {
            continue;
        }
        model.m_weight[k] = count / static_cast<double>(sampleCount);
        for (int i = 0; i < kChannels; ++i) {
            model.m_mean[k][i] = statistics.m_sum[i][k] / count;
        }
        for (int i = 0; i < kChannels; ++i) {
            for (int j = 0; j < kChannels; ++j) {
                const int p = kChannels * i + j;
                model.m_covariance[k][p] =
                    statistics.m_sumProduct[p][k] / count - model.m_mean[k][i] * model.m_mean[k][j];
            }
        }
    }
    model.setDeterminant();
}
