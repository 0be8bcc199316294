// Re-estimation of the colour models from new labels.
#pragma once

#include <vector>

#include "colour/color_model.h"
#include "support/export.h"

// One hard-assignment step: every sample goes to its most likely component under the model as it
// stands, then every component that received samples is re-estimated. The inverse covariances are
// stale until the caller runs setInverseCovariance. Throws std::bad_alloc without memory.
SEGCORE_API void updateModel(const std::vector<pixelVal>& samples, VORNSEColorModel& model);
SEGCORE_API void updateModel(const std::vector<pixelVal>& samplesA,
                             const std::vector<pixelVal>& samplesB, VORNSEColorModel& modelA,
                             VORNSEColorModel& modelB);
