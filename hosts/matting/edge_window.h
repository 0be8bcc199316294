// How well blurred edges of several shapes explain the colours of a small window.
#pragma once

#include <array>
#include <cstddef>

constexpr std::array<float, 10> kTriedSigmas = {0.3F, 0.45F, 0.65F, 0.9F, 1.3F,
                                                1.8F, 2.6F,  3.7F,  5.2F, 7.4F};

// One value for each deviation that is tried.
using TriedEdges = std::array<float, kTriedSigmas.size()>;

// Alpha at a distance from the outline.
TriedEdges triedAlphas(float distance);

// What the best constant F and B of alpha F + (1 - alpha) B leave over of the colours in a window.
struct LeftOver {
    TriedEdges logarithms{};  // of the mean square
    TriedEdges shares{};      // of the colours' variance, 0 to 1
};

// Sums over a window's pixels.
class EdgeWindow {
  public:
    // Colours are counted from the middle's on, so that small differences keep their digits.
    explicit EdgeWindow(const float* middle) : m_middle(middle) {}

    void add(const TriedEdges& alphas, const float* colour);
    LeftOver leftOver() const;

  private:
    double variance() const;
    double left(size_t edge) const;

    const float* m_middle;
    TriedEdges m_alpha{};
    TriedEdges m_alphaSquared{};
    std::array<TriedEdges, 3> m_alphaColour{};
    std::array<float, 3> m_colour{};
    float m_squares = 0.0F;
    float m_count = 0.0F;
};
