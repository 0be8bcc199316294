#include "matting/level_alpha.h"

#include <algorithm>
#include <cmath>

#include "matting/alpha_solver.h"
#include "matting/connected_alpha.h"
#include "matting/outline_prior.h"

namespace {

constexpr float kWhole = 65535.0F;
constexpr int kTile = 16;
constexpr int kRim = MattingLaplacian::kRim;

// Bilinear between the centres of the coarser level's pixels, for each fine pixel of a square.
class Enlargement {
  public:
    Enlargement(const OutlineLevel& coarse, const OutlineLevel& fine)
        : m_from(coarse.alpha()), m_to(fine.alpha()), m_fine(fine) {}

    void tile(int left, int top) const {
        if (isFlat(left, top)) {
            return;
        }
        for (int y = top; y < std::min(top + kTile, m_to.height); ++y) {
            for (int x = left; x < std::min(left + kTile, m_to.width); ++x) {
                if (m_fine.isTooSoft(x, y)) {
                    m_to.row(y)[x] = static_cast<std::uint16_t>(std::lround(at(x, y)));
                }
            }
        }
    }

  private:
    float coarse(int x, int y) const {
        return static_cast<float>(
            m_from.row(std::clamp(y, 0, m_from.height - 1))[std::clamp(x, 0, m_from.width - 1)]);
    }

    // All that the square would be made from is the same, as in most of a picture.
    bool isFlat(int left, int top) const {
        const float first = coarse(left / 2 - 1, top / 2 - 1);
        for (int y = top / 2 - 1; y <= top / 2 + kTile / 2; ++y) {
            for (int x = left / 2 - 1; x <= left / 2 + kTile / 2; ++x) {
                if (coarse(x, y) != first) {
                    return false;
                }
            }
        }
        return true;
    }

    float at(int x, int y) const {
        // Before the middle of the coarse pixel that holds it, between that one and the one before.
        const int left = (x + 1) / 2 - 1;
        const int above = (y + 1) / 2 - 1;
        const float fx = x % 2 != 0 ? 0.25F : 0.75F;
        const float fy = y % 2 != 0 ? 0.25F : 0.75F;
        const float upper = (1.0F - fx) * coarse(left, above) + fx * coarse(left + 1, above);
        const float lower =
            (1.0F - fx) * coarse(left, above + 1) + fx * coarse(left + 1, above + 1);
        return (1.0F - fy) * upper + fy * lower;
    }

    Plane<std::uint16_t> m_from;
    Plane<std::uint16_t> m_to;
    const OutlineLevel& m_fine;
};

PixelRuns pixelsToSolve(const OutlineLevel& level, float width, bool isCoarsest) {
    const OutlineBand& band = level.band();
    PixelRuns inner(level.mask().width, level.mask().height);
    for (const PixelRun& run : band.pixels.runs()) {
        for (int x = run.begin; x < run.end; ++x) {
            const EdgeShape shape =
                level.shapes().at(static_cast<float>(x), static_cast<float>(run.row));
            const float reach = width > 0.0F ? width : softReach(shape);
            if ((isCoarsest || shape.sigma <= kSoftestSolved) &&
                std::fabs(band.distance[static_cast<size_t>(run.numberOf(x))]) <= reach) {
                inner.add(run.row, x, x + 1);
            }
        }
    }
    return inner;
}

struct Start {
    std::vector<float> alpha;
    std::vector<std::uint8_t> inside;
};

Start startOf(const OutlineLevel& level, const PixelRuns& all) {
    Start start;
    start.alpha.reserve(static_cast<size_t>(all.size()));
    start.inside.reserve(static_cast<size_t>(all.size()));
    for (const PixelRun& run : all.runs()) {
        const int y = std::clamp(run.row - kRim, 0, level.mask().height - 1);
        for (int column = run.begin; column < run.end; ++column) {
            const int x = std::clamp(column - kRim, 0, level.mask().width - 1);
            start.alpha.push_back(static_cast<float>(level.alpha().row(y)[x]) / kWhole);
            start.inside.push_back(level.mask().row(y)[x]);
        }
    }
    return start;
}

}  // namespace

void setHard(const OutlineLevel& level) {
    for (int y = 0; y < level.mask().height; ++y) {
        const std::uint8_t* from = level.mask().row(y);
        std::uint16_t* to = level.alpha().row(y);
        for (int x = 0; x < level.mask().width; ++x) {
            to[x] = from[x] != 0 ? 65535 : 0;
        }
    }
}

void enlarge(const OutlineLevel& coarse, const OutlineLevel& fine,
             const std::function<void()>& checkpoint) {
    const Enlargement enlargement(coarse, fine);
    for (int top = 0; top < fine.alpha().height; top += kTile) {
        checkpoint();
        for (int left = 0; left < fine.alpha().width; left += kTile) {
            enlargement.tile(left, top);
        }
    }
}

void solve(const ColourPlane& photograph, const OutlineLevel& level, float width, bool isCoarsest,
           const std::function<void()>& checkpoint) {
    const PixelRuns inner = pixelsToSolve(level, width, isCoarsest);
    const PixelRuns all = grown(inner, kRim);
    const MattingLaplacian laplacian(inner, all, coloursOf(photograph, level.number(), all, kRim),
                                     checkpoint);
    const AlphaPrior prior =
        outlinePrior(inner, level, coloursOf(photograph, level.number(), inner, 0));
    Start start = startOf(level, all);
    std::vector<float>& alpha = start.alpha;
    solveAlpha(inner, laplacian, prior, alpha, checkpoint);
    for (float& value : alpha) {
        value = std::clamp(value, 0.0F, 1.0F);
    }
    connectToOutline(laplacian.stretches(), start.inside, alpha);
    auto stretch = laplacian.stretches().begin();
    for (const PixelRun& run : inner.runs()) {
        const float* from = &alpha[static_cast<size_t>((stretch++)->first)];
        std::transform(
            from, from + run.length(), level.alpha().row(run.row) + run.begin,
            [](float value) { return static_cast<std::uint16_t>(std::lround(value * kWhole)); });
    }
}
