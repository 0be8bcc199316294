// Terminal weights of a pixel that the colour models decide.
#pragma once

#include <cmath>

#include "colour/color_model.h"
#include "colour/training_data.h"

// Ties a marked pixel to its terminal: large beside the other capacities, deliberately finite.
constexpr float kHardWeight = 1000.0F;

struct TerminalWeights {
    double source;
    double sink;
};

// Minus the log-likelihood under the opposite model, without clamping: a likelihood of 0 gives an
// infinite capacity, which the graph carries.
inline TerminalWeights modelWeights(const VORNSEColorModel& foreground,
                                    const VORNSEColorModel& background, pixelVal sample) {
    const double pb = GMMProb(background, sample);
    const double pf = GMMProb(foreground, sample);
    return {-std::log(pb), -std::log(pf)};
}
