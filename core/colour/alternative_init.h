// Further ways to initialise a colour model, for hosts; the engine itself uses model_init.h.
//
// Threads: one at a time, g_maxVarDir is shared.
#pragma once

#include <opencv2/core/core_c.h>

#include <vector>

#include "colour/color_model.h"
#include "support/export.h"

// A sample with a score. `order` sorts by rising score. It calls a score that is not a number less
// than any other, itself included, so such scores must not be sorted.
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

// Splits samples at the mean of the channel that varies most, the lower channel on a tie. Those
// below the mean are appended to `low`, the others to `high`. If one of the two is still empty
// then, it gets the first sample, if there is any.
SEGCORE_API void varPartition(const std::vector<pixelVal>& in, std::vector<pixelVal>& low,
                              std::vector<pixelVal>& high);
// Finds five centres (rows of three doubles): splits the samples four times, always the part whose
// samples lie farthest from their mean on average.
SEGCORE_API void varParInit(const std::vector<pixelVal>& samples, double** centres);

// As initModelWithKmeansVORN, but with the imaging library's k-means. Its random generator is
// seeded for the call and put back after it, so equal samples give equal models. Fewer than
// five samples change nothing.
SEGCORE_API void initModelWithKmeans(const std::vector<pixelVal>& samples, VORNSEColorModel& model);
SEGCORE_API void initModelWithKmeans(const std::vector<pixelVal>& samplesA,
                                     const std::vector<pixelVal>& samplesB,
                                     VORNSEColorModel& modelA, VORNSEColorModel& modelB);

// Initialises two models from `image` (3 channels; a fourth is not read) and `labels` (1
// channel, same size). Only the background labels 1 and 3 are trusted. Every other pixel is
// scored by its density under a model of the background: the third that fits worst trains
// `first`, the third that fits best joins the background pixels and trains `second`, and the
// third between trains neither. A null label image leaves both models as they are; so do images
// that do not fit, with one error line.
SEGCORE_API void initThirdInitalization(const IplImage* image, const IplImage* labels,
                                        VORNSEColorModel& first, VORNSEColorModel& second);
