// The pixels along a mask's outline with their exact distances to it.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "matting/pixel_runs.h"
#include "matting/plane.h"

constexpr int kFarthestReach = 32;

// For each pixel of the band the offset to the nearest pixel on the other side of the outline
// (of equally near ones, always the same one).
struct AcrossOutline {
    std::int8_t dx;
    std::int8_t dy;

    int squaredLength() const { return dx * dx + dy * dy; }
};

struct OutlineBand {
    PixelRuns pixels;
    std::vector<AcrossOutline> across;
    std::vector<std::uint8_t> inside;  // 1 on the object's side
    // Pixels from the outline, positive inside. The outline runs half a pixel before the centre of the
    // nearest pixel across.
    std::vector<float> distance;
};

// All pixels with one of the other side at most `reach` (up to kFarthestReach) away, from centre to
// centre. `mask` is 0 or not; what lies beyond the picture belongs to neither side.
OutlineBand outlineBand(Plane<const std::uint8_t> mask, int reach,
                        const std::function<void()>& checkpoint);

// Corrects the distances in a reduced mask by how much of the pixels at the outline the object covers:
// `covered` counts, `full` stands for all of a pixel.
void refineDistances(Plane<const std::uint16_t> covered, int full, OutlineBand& band);

// Values of the pixels, such as distances, smoothed by a Gaussian with a deviation of 0.8 pixels. What
// lies beyond the set counts like the pixel itself.
std::vector<float> smoothed(const PixelRuns& pixels, const std::vector<float>& values);
