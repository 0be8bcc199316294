// Masks by a program or by a quick hand are off in places. Alpha tells where.
#pragma once

#include <cstdint>
#include <vector>

#include "matting/outline_band.h"

// The mask with what alpha puts to the other side of one half, where that reaches so far from the
// outline that no pixel which the edge merely crosses is meant. Empty when nothing does. `mask` is 0 or
// not; the result 0 or 1, row by row.
std::vector<std::uint8_t> movedMask(const OutlineBand& band, Plane<const std::uint8_t> mask,
                                    Plane<const std::uint16_t> alpha);
