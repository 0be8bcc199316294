// No haze outside an object and no holes inside.
#pragma once

#include <cstdint>
#include <vector>

#include "matting/matting_laplacian.h"

// Lowers alpha of inner pixels outside the mask to the most that a way from the mask has all along it,
// and lifts that of pixels inside to the least that a way from outside has: what is brighter or darker
// without a way to it is taken for texture. `alpha` and `inside` (1 for the mask's pixels) are numbered
// as the Laplacian's pixels; those in the frame around the picture count like their neighbours.
void connectToOutline(const std::vector<MattingLaplacian::Stretch>& stretches,
                      const std::vector<std::uint8_t>& inside, std::vector<float>& alpha);
