// Expectation-maximisation of the mixture model (A. Dempster, N. Laird and D. Rubin, "Maximum
// Likelihood from Incomplete Data via the EM Algorithm", J. R. Stat. Soc. B 39, 1977).
//
// The first pass weighs the samples by the determinants and inverses that it finds. Every pass ends
// by computing them anew, so that the next one goes by what this one estimated. That keeps the
// likelihood of the samples from falling, unless a component has collapsed onto a point, a line or
// a plane of colours and its diagonal is raised.
//
// A sample whose density is 0 under every component belongs to none: it takes no part in means and
// covariances but counts in the weights, which then sum to less than 1.
#include <array>

#include "colour/color_model.h"

namespace {

using Responsibilities = std::vector<std::array<double, kComponents>>;

std::array<double, kChannels> channelsOf(pixelVal x) {
    return {x.ch0, x.ch1, x.ch2};
}

void expectation(const VORNSEColorModel& model, const std::vector<pixelVal>& samples,
                 Responsibilities& shares) {
    for (std::size_t s = 0; s < samples.size(); ++s) {
        double sum = 0.0;
        for (int k = 0; k < kComponents; ++k) {
            double& share = shares[s][static_cast<std::size_t>(k)];
            share = model.m_weight[k] * model.gaussianProb(k, samples[s]);
            sum += share;
        }
        for (double& share : shares[s]) {
            share = sum > 0.0 ? share / sum : 0.0;
        }
    }
}

// Re-estimates one component; one without any share becomes absent.
void maximise(VORNSEColorModel& model, int k, const std::vector<pixelVal>& samples,
              const Responsibilities& shares) {
    const auto component = static_cast<std::size_t>(k);
    double total = 0.0;
    std::array<double, kChannels> sum{};
    for (std::size_t s = 0; s < samples.size(); ++s) {
        const double share = shares[s][component];
        const auto value = channelsOf(samples[s]);
        total += share;
        for (std::size_t c = 0; c < kChannels; ++c) {
            sum[c] += share * value[c];
        }
    }
    model.m_weight[k] = total / static_cast<double>(samples.size());
    if (!(total > 0.0)) {
        return;
    }
    for (std::size_t c = 0; c < kChannels; ++c) {
        model.m_mean[k][c] = sum[c] / total;
    }
    std::array<double, kChannels * kChannels> moment{};
    for (std::size_t s = 0; s < samples.size(); ++s) {
        const auto value = channelsOf(samples[s]);
        for (std::size_t i = 0; i < kChannels; ++i) {
            for (std::size_t j = 0; j < kChannels; ++j) {
                moment[kChannels * i + j] += shares[s][component] *
                                             (value[i] - model.m_mean[k][i]) *
                                             (value[j] - model.m_mean[k][j]);
            }
        }
    }
    for (std::size_t p = 0; p < moment.size(); ++p) {
        model.m_covariance[k][p] = moment[p] / total;
    }
}

}  // namespace

// By value, as the exported signature has it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void VORNSEColorModel::EM(std::vector<pixelVal> samples, int iterations) {
    if (samples.size() < kComponents) {
        return;
    }
    if (iterations < 1) {
        setDeterminant();
        setInverseCovariance();
        return;
    }
    Responsibilities shares(samples.size());
    for (int pass = 0; pass < iterations; ++pass) {
        expectation(*this, samples, shares);
        for (int k = 0; k < kComponents; ++k) {
            maximise(*this, k, samples, shares);
        }
        setDeterminant();
        setInverseCovariance();
    }
}
