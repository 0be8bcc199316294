#include "matting/edge_window.h"

#include <algorithm>
#include <cmath>

#include "matting/edge_profile.h"

namespace {

constexpr double kNoise = 1e-5;  // squared colour that every edge leaves over

// The library's own differs in the last bit between machines.
float logarithm(double value) {
    constexpr double kLogarithmOf2 = 0.6931471805599453;
    constexpr double kRootOfHalf = 0.7071067811865476;
    int exponent = 0;
    double mantissa = std::frexp(value, &exponent);  // 0.5 to 1
    if (mantissa < kRootOfHalf) {
        mantissa *= 2.0;
        --exponent;
    }
    const double t = (mantissa - 1.0) / (mantissa + 1.0);
    const double tt = t * t;
    const double series = 1.0 + tt * (1.0 / 3.0 + tt * (1.0 / 5.0 + tt * (1.0 / 7.0 + tt / 9.0)));
    return static_cast<float>(exponent * kLogarithmOf2 + 2.0 * t * series);
}

}  // namespace

TriedEdges triedAlphas(float distance) {
    TriedEdges alphas{};
    for (size_t edge = 0; edge < alphas.size(); ++edge) {
        alphas[edge] = blurredEdge(distance / kTriedSigmas[edge]);
    }
    return alphas;
}

void EdgeWindow::add(const TriedEdges& alphas, const float* colour) {
    const std::array<float, 3> c = {colour[0] - m_middle[0], colour[1] - m_middle[1],
                                    colour[2] - m_middle[2]};
    for (size_t edge = 0; edge < alphas.size(); ++edge) {
        m_alpha[edge] += alphas[edge];
        m_alphaSquared[edge] += alphas[edge] * alphas[edge];
        m_alphaColour[0][edge] += alphas[edge] * c[0];
        m_alphaColour[1][edge] += alphas[edge] * c[1];
        m_alphaColour[2][edge] += alphas[edge] * c[2];
    }
    for (size_t channel = 0; channel < 3; ++channel) {
        m_colour[channel] += c[channel];
        m_squares += c[channel] * c[channel];
    }
    m_count += 1.0F;
}

LeftOver EdgeWindow::leftOver() const {
    LeftOver result;
    const double all = variance() + kNoise;
    for (size_t edge = 0; edge < kTriedSigmas.size(); ++edge) {
        const double rest = left(edge) + kNoise;
        result.logarithms[edge] = logarithm(rest);
        result.shares[edge] = static_cast<float>(std::min(rest / all, 1.0));
    }
    return result;
}

double EdgeWindow::variance() const {
    const auto count = static_cast<double>(m_count);
    double result = static_cast<double>(m_squares) / count;
    for (const float sum : m_colour) {
        const double mean = static_cast<double>(sum) / count;
        result -= mean * mean;
    }
    return std::max(result, 0.0);
}

// The normal equations of F and B, which all channels share.
double EdgeWindow::left(size_t edge) const {
    const auto count = static_cast<double>(m_count);
    const double alpha = static_cast<double>(m_alpha[edge]) / count;
    const double ff = static_cast<double>(m_alphaSquared[edge]) / count;
    const double fb = alpha - ff;
    const double bb = 1.0 - 2.0 * alpha + ff;
    const double determinant = std::max(ff * bb - fb * fb, 1e-9);
    double rest = static_cast<double>(m_squares) / count;
    for (size_t channel = 0; channel < 3; ++channel) {
        const double p = static_cast<double>(m_alphaColour[channel][edge]) / count;
        const double q = static_cast<double>(m_colour[channel]) / count - p;
        rest -= (p * (bb * p - fb * q) + q * (ff * q - fb * p)) / determinant;
    }
    return std::max(rest, 0.0);
}
