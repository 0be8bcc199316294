// The object's own colours where something else shines through: the work of matting.h without any
// imaging library.
#pragma once

#include <cstdint>
#include <functional>

#include "matting/plane.h"

// `picture` has `channels` (1 to 4) values for each pixel and is changed in place where alpha is more
// than 0 and less than 65535. Value is std::uint8_t or std::uint16_t.
template <typename Value>
void keepForeground(Plane<Value> picture, int channels, Plane<const std::uint16_t> alpha,
                    const std::function<void()>& checkpoint);
