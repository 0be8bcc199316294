// From a photograph and a hard mask to alpha: the work of matting.h without any imaging library.
#pragma once

#include <cstdint>
#include <functional>

#include "matting/plane.h"

struct ColourPlane {
    Plane<const std::uint8_t> rows;  // width and height in pixels
    int channels = 3;                // bytes of a pixel, the first three are its colour
};

// `width`: pixels that the soft edge may reach to either side of the outline, 0 as measured.
// `mask` is 0 or not, `alpha` 0 to 65535; all have one size.
void softAlpha(const ColourPlane& photograph, Plane<const std::uint8_t> mask, double width,
               Plane<std::uint16_t> alpha, const std::function<void()>& checkpoint);
