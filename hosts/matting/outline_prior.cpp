// Alpha is drawn to the outline, blurred as softly as the photograph's edge is there: the more strongly
// the sharper that is, and the further away from it. The weights were found on photographs with true
// alpha, for crisp objects and for fur.
#include "matting/outline_prior.h"

#include <algorithm>
#include <cmath>

#include "matting/edge_profile.h"

namespace {

// A sharp edge is hard but for the pixels that it crosses, of which the colours tell more.
float targetAt(float distance, float sigma) {
    constexpr float kHard = 0.6F;
    constexpr float kSoft = 0.8F;
    const float softness = std::clamp((sigma - kHard) / (kSoft - kHard), 0.0F, 1.0F);
    const float hard = distance > 0.0F ? 1.0F : 0.0F;
    return hard + softness * (blurredEdge(distance / sigma) - hard);
}

// Where object and surroundings look alike, colours tell little, and the place counts more.
float weightAt(float distance, const EdgeShape& shape) {
    constexpr float kMost = 0.5F;
    constexpr float kAtOnePixel = 0.08F;  // of deviation
    constexpr float kScale = 1.5F;        // pixels from which on the weight grows
    constexpr float kMostAlike = 20.0F;
    const float scaled = distance / std::max(kScale, shape.sigma);
    const float unexplained = std::min(shape.unexplained, 0.99F);
    return std::min(kMost, kAtOnePixel / (shape.sigma * shape.sigma)) * (1.0F + scaled * scaled) *
           (1.0F + std::min(unexplained / (1.0F - unexplained), kMostAlike));
}

}  // namespace

float softReach(const EdgeShape& shape) {
    constexpr float kMost = static_cast<float>(EdgeShapes::kReach) - 1.0F;
    return std::min(2.0F + 2.2F * shape.sigma, kMost);
}

AlphaPrior outlinePrior(const PixelRuns& inner, const OutlineBand& band, const EdgeShapes& shapes) {
    AlphaPrior prior;
    prior.target.reserve(static_cast<size_t>(inner.size()));
    prior.weight.reserve(static_cast<size_t>(inner.size()));
    for (const PixelRun& run : inner.runs()) {
        const int first = band.pixels.find(run.row, run.begin)->numberOf(run.begin);
        for (int i = 0; i < run.length(); ++i) {
            const EdgeShape shape =
                shapes.at(static_cast<float>(run.begin + i), static_cast<float>(run.row));
            const float distance = band.distance[static_cast<size_t>(first + i)];
            prior.target.push_back(targetAt(distance, shape.sigma));
            prior.weight.push_back(weightAt(distance, shape));
        }
    }
    return prior;
}
