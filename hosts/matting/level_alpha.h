// Alpha of one level: the hard mask's, that of a coarser level, and the solved one.
#pragma once

#include <functional>

#include "matting/outline_level.h"

void setHard(const OutlineLevel& level);

// Where the edge is too soft for `fine`, its alpha becomes that of the next coarser level.
void enlarge(const OutlineLevel& coarse, const OutlineLevel& fine,
             const std::function<void()>& checkpoint);

// Solves for alpha near the outline, with what is beyond as it is. `width`: pixels from the outline that
// may change, 0 for as many as the edge is soft. With `isCoarsest`, also where the edge is too soft.
void solve(const ColourPlane& photograph, const OutlineLevel& level, float width, bool isCoarsest,
           const std::function<void()>& checkpoint);
