// Alpha is drawn to the outline, blurred as softly as the photograph's edge is there: the more strongly
// the sharper that is, and the further away from it; and a little to what the colours nearby tell, which
// mends outlines that are off. The weights were found on photographs with true
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

float weightOf(const ColourAlpha& estimate) {
    constexpr float kMost = 0.3F;
    constexpr float kPerCertainty = 0.0004F;  // a contrast of ten deviations weighs 0.04
    return std::min(kPerCertainty * estimate.certainty, kMost);
}

}  // namespace

float softReach(const EdgeShape& shape) {
    constexpr float kMost = static_cast<float>(EdgeShapes::kReach) - 1.0F;
    return std::min(2.0F + 2.2F * shape.sigma, kMost);
}

AlphaPrior outlinePrior(const PixelRuns& inner, const OutlineLevel& level,
                        const std::vector<float>& colours) {
    const OutlineBand& band = level.band();
    AlphaPrior prior;
    prior.target.reserve(static_cast<size_t>(inner.size()));
    prior.weight.reserve(static_cast<size_t>(inner.size()));
    for (const PixelRun& run : inner.runs()) {
        const int first = band.pixels.find(run.row, run.begin)->numberOf(run.begin);
        for (int i = 0; i < run.length(); ++i) {
            const auto x = static_cast<float>(run.begin + i);
            const auto y = static_cast<float>(run.row);
            const EdgeShape shape = level.shapes().at(x, y);
            const float distance = band.distance[static_cast<size_t>(first + i)];
            const ColourAlpha estimate =
                level.estimates().at(x, y, &colours[3 * static_cast<size_t>(run.first + i)]);
            const float place = weightAt(distance, shape);
            const float colour = weightOf(estimate);
            prior.target.push_back(
                (place * targetAt(distance, shape.sigma) + colour * estimate.alpha) /
                (place + colour));
            prior.weight.push_back(place + colour);
        }
    }
    return prior;
}
