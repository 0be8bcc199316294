#include "matting/outline_prior.h"

#include <algorithm>
#include <cmath>

#include "matting/edge_profile.h"

namespace {

// Masks by hand or by a program are hardly better than this, and the measure neither.
constexpr float kTrustedShift = 0.5F;  // pixels

float weightOf(const EdgeShape& shape, float distance) {
    constexpr float kMost = 0.5F;
    constexpr float kAtOnePixel = 0.15F;  // of deviation; softer edges leave more to the colours
    constexpr float kScale = 2.0F;
    const float scale = kScale * std::max(1.0F, shape.sigma / 1.5F);
    const float scaled = distance / scale;
    return std::min(kMost, kAtOnePixel / (shape.sigma * shape.sigma)) * (1.0F + scaled * scaled);
}

}  // namespace

float softReach(const EdgeShape& shape) {
    constexpr float kMost = static_cast<float>(EdgeShapes::kReach) - 1.0F;
    return std::min(2.0F + 2.5F * shape.sigma, kMost);
}

AlphaPrior outlinePrior(const PixelRuns& inner, const OutlineBand& band, const EdgeShapes& shapes) {
    AlphaPrior prior;
    prior.target.reserve(static_cast<size_t>(inner.size()));
    prior.weight.reserve(static_cast<size_t>(inner.size()));
    for (const PixelRun& run : inner.runs()) {
        const float* distances = &band.distance[static_cast<size_t>(
            band.pixels.find(run.row, run.begin)->numberOf(run.begin))];
        for (int x = run.begin; x < run.end; ++x) {
            const EdgeShape shape = shapes.at(static_cast<float>(x), static_cast<float>(run.row));
            const float moved = std::max(std::fabs(shape.shift) - kTrustedShift, 0.0F);
            const float distance = *distances++ - (shape.shift > 0.0F ? moved : -moved);
            prior.target.push_back(blurredEdge(distance / shape.sigma));
            prior.weight.push_back(weightOf(shape, distance));
        }
    }
    return prior;
}
