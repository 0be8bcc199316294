// Further ways to initialise a colour model, for hosts; the engine itself uses model_init.h.
//
// Threads: one at a time, g_maxVarDir is shared.
#pragma once

#include <opencv2/core/core_c.h>

#include <vector>

#include "colour/color_model.h"
#include "support/export.h"

// A sample with a score, and the order of rising scores; a score that is not a number counts as
// less, so such scores must not be sorted.
struct vec4 {
    double ch0;
    double ch1;
    double ch2;
    double score;
};
SEGCORE_API bool order(vec4 a, vec4 b);

SEGCORE_API double distSq(pixelVal a, pixelVal b);  // squared Euclidean distance
// Zero for no samples.
SEGCORE_API pixelVal findMean(const std::vector<pixelVal>& samples);
// Sum of squared distances to the mean; zero for no samples.
SEGCORE_API double findSSE(const std::vector<pixelVal>& samples);

// The channel (0, 1 or 2) that varPartition split last.
SEGCORE_DATA_API extern int g_maxVarDir;

// Splits samples at the mean of their channel of the largest variance (the lower channel on a tie)
// and appends them to `low` and, from the mean upwards, to `high`. Neither is left empty unless
// `in` is: the first sample stands in.
SEGCORE_API void varPartition(const std::vector<pixelVal>& in, std::vector<pixelVal>& low,
                              std::vector<pixelVal>& high);
// Five centres (rows of three doubles) by splitting four times what has the largest mean squared
// distance to its own mean.
SEGCORE_API void varParInit(const std::vector<pixelVal>& samples, double** centres);

// As initModelWithKmeansVORN, on the imaging library's k-means. Equal samples give equal models:
// the library's random generator is seeded for the call and put back. Fewer than five samples
// change nothing.
SEGCORE_API void initModelWithKmeans(const std::vector<pixelVal>& samples, VORNSEColorModel& model);
SEGCORE_API void initModelWithKmeans(const std::vector<pixelVal>& samplesA,
                                     const std::vector<pixelVal>& samplesB,
                                     VORNSEColorModel& modelA, VORNSEColorModel& modelB);

// Initialises two models from `image` (3 channels, or 4 of which the last is not read) and `labels` (1
// channel, same size), where only the background labels 1 and 3 are trusted: every other pixel is scored by its density under a
// model of the background. The third that fits it least trains `first`, the third that fits it best
// joins the background pixels and trains `second`, the third between trains neither. A null label
// image leaves both models as they are; so do images that do not fit, with one error line.
SEGCORE_API void initThirdInitalization(const IplImage* image, const IplImage* labels,
                                        VORNSEColorModel& first, VORNSEColorModel& second);
