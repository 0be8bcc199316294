// Alpha of the pixels near an outline: it follows the colours (matting Laplacian L) and is drawn to a
// target t with weight w; what is beyond stays as it is. The minimum of a'La + sum w (a - t)^2.
#pragma once

#include <functional>
#include <vector>

#include "matting/matting_laplacian.h"

struct AlphaPrior {
    std::vector<float> target;  // 0 to 1, for each inner pixel
    std::vector<float> weight;  // more than 0
};

// `alpha` is numbered as grown(inner, MattingLaplacian::kRim): where to start from, and the result.
// Only the inner pixels change. It may leave 0 to 1. Returns the number of rounds.
int solveAlpha(const PixelRuns& inner, const MattingLaplacian& laplacian, const AlphaPrior& prior,
               std::vector<float>& alpha, const std::function<void()>& checkpoint);
