// Where alpha is drawn to near an outline, and how strongly.
#pragma once

#include "matting/alpha_solver.h"
#include "matting/outline_level.h"

// Pixels from the outline that an edge of this shape may reach to.
float softReach(const EdgeShape& shape);

// For the pixels of `inner`, all of which are in the level's band. `colours`: three values of each.
AlphaPrior outlinePrior(const PixelRuns& inner, const OutlineLevel& level,
                        const std::vector<float>& colours);
