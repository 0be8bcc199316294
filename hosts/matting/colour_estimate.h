// What a pixel's colour tells of its alpha, by the colours of object and surroundings nearby.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "matting/edge_softness.h"
#include "matting/outline_band.h"
#include "matting/outline_squares.h"

// The estimate and its certainty: the inverse of its variance.
struct ColourAlpha {
    float alpha = 0.5F;
    float certainty = 0.0F;
};

class ColourEstimates {
  public:
    // Arguments as of EdgeShapes, which tell where the edge begins and ends.
    ColourEstimates(const OutlineBand& band, const std::vector<float>& colours,
                    const EdgeShapes& shapes, const std::function<void()>& checkpoint);

    // `colour`: three values of 0 to 1 of the pixel at a place.
    ColourAlpha at(float x, float y, const float* colour) const;

  private:
    static constexpr int kSquare = 16;  // pixels

    // alpha = slope * colour + offset
    struct Line {
        std::array<float, 3> slope{};
        float offset = 0.0F;
        float certainty = 0.0F;
    };
    static Line lineBetween(const std::array<double, 3>& surroundings,
                            const std::array<double, 3>& contrast,
                            const std::array<double, 3>& direction);

    Squares<Line, kSquare> m_lines;
};
