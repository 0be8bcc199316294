// A further softening of alpha, for taste.
#pragma once

#include <cstdint>
#include <functional>

#include "matting/plane.h"

constexpr double kWidestFeather = 100.0;

// Blurs alpha in place as a Gaussian of deviation `sigma` (0 to kWidestFeather) pixels would; beyond the
// picture it goes on like at its border. All flat stays as it is.
void feather(Plane<std::uint16_t> alpha, double sigma, const std::function<void()>& checkpoint);
