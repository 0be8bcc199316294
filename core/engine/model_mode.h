// What the choice of the smoothness weight and the passes tell each other.
#pragma once

#include "engine/hybrid.h"

constexpr int kTrials = 3;  // smoothness weights that are tried, one a pass
static_assert(sizeof(VORNSEHybrid::m_trialLabels) / sizeof(IplImage*) == kTrials,
              "the labels of every trial are kept");

// What a pass does with the colour models: the results of VORNSEHybrid::parallelLamdaSwtich.
constexpr int kTrainModels = 0;
constexpr int kUpdateModels = 1;
constexpr int kKeepModels = 2;

// Results of VORNSEHybrid::homogenousLamda.
constexpr int kFlatBackground = 0;
constexpr int kVariedBackground = 1;

// Where a request starts, and returns to on a flat background.
constexpr double kStartLambda = 50.0;
// Added to the diagonal of singular covariances.
constexpr double kNoise = 0.1;
constexpr double kNoiseFlatBackground = 10.0;  // spreads the components of one even colour
