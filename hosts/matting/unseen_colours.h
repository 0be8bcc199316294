// Colours for the pixels that show nothing of the object.
#pragma once

#include <cstdint>
#include <functional>

#include "matting/plane.h"

// Gives each pixel with alpha 0 the colour of the nearest one with more; zero when there is none.
// Value is std::uint8_t or std::uint16_t; a pixel has `channels` of them.
template <typename Value>
void spreadColours(Plane<Value> picture, int channels, Plane<const std::uint16_t> alpha,
                   const std::function<void()>& checkpoint);
