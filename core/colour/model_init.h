// Initialisation of the colour models by k-means.
#pragma once

#include <vector>

#include "colour/color_model.h"
#include "support/export.h"

// Clusters the samples and estimates one component per cluster. A cluster without samples leaves
// its component as it was; fewer than five samples change nothing. The caller follows with
// setInverseCovariance. Throws std::bad_alloc without memory.
SEGCORE_API void initModelWithKmeansVORN(const std::vector<pixelVal>& samples,
                                         VORNSEColorModel& model);

// The engine's entry; the last argument is not read.
SEGCORE_API void initModel(const std::vector<pixelVal>& samples, VORNSEColorModel& model, int);
SEGCORE_API void initModel(const std::vector<pixelVal>& samplesA,
                           const std::vector<pixelVal>& samplesB, VORNSEColorModel& modelA,
                           VORNSEColorModel& modelB, int);
