// Where alpha is drawn to near an outline, and how strongly.
#pragma once

#include "matting/alpha_solver.h"
#include "matting/edge_softness.h"
#include "matting/outline_band.h"

// Pixels from the outline that an edge of this shape may reach to.
float softReach(const EdgeShape& shape);

// For the pixels of `inner`, all of which are in the band.
AlphaPrior outlinePrior(const PixelRuns& inner, const OutlineBand& band, const EdgeShapes& shapes);
