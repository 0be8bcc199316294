// Pictures reduced by a power of two, seen at a few places only.
#pragma once

#include <cstdint>
#include <vector>

#include "matting/pixel_runs.h"
#include "matting/soft_alpha.h"

// Mean colours of squares of 2^level pixels, three values of 0 to 1 each. The pixels are those of a set
// in a frame of `frame` pixels around the reduced picture; what lies outside takes the nearest colour.
std::vector<float> coloursOf(const ColourPlane& photograph, int level, const PixelRuns& pixels,
                             int frame);

// A mask of half the size, rounded up.
struct SmallMask {
    int width = 0;
    int height = 0;
    int full = 1;                        // pixels of the mask that one here stands for
    std::vector<std::uint16_t> covered;  // how many of them are the object's
    std::vector<std::uint8_t> values;    // 1 where at least half of them are

    Plane<const std::uint8_t> plane() const { return {values.data(), width, width, height}; }
};
SmallMask halved(Plane<const std::uint8_t> mask);
// As often as the largest `full` fits its type.
SmallMask halved(const SmallMask& mask);
