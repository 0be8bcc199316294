// The most likely of some blurs, found in windows along the outline: a window's colours are to be
// a F + (1 - a) B, with a the blurred outline and F and B constant, by least squares. What
// that leaves over is least for the right blur. Single windows err; as softness changes slowly along an
// outline, the logarithms of what is left are averaged along it.
#include "matting/edge_softness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "matting/edge_window.h"

namespace {

constexpr int kRadius = 5;              // of a window, pixels
constexpr float kNear = 1.0F;           // from the outline to the middles of windows, pixels
constexpr int kEverySecond = 2;         // pixel near the outline, as on a chess-board
constexpr float kWholeOutline = 0.15F;  // weight of the whole outline beside the surroundings
// Each next softer blur has to leave less by this much (logarithm): where an object's texture has the mean
// of its surroundings none explains anything, and a sharp edge does the least harm.
constexpr float kSofter = 0.004F;
// A Gaussian of 19 pixels, in squares of 16.
constexpr std::array<float, 4> kPool = {1.0F, 0.7066F, 0.2494F, 0.0439F};
// Softer edges are wider than the windows.
constexpr float kSoftestMeasured = 6.0F;

// Sums of what windows leave over.
struct Evidence {
    LeftOver sums;
    float count = 0.0F;

    void add(const LeftOver& left, float weight) {
        for (size_t edge = 0; edge < kTriedSigmas.size(); ++edge) {
            sums.logarithms[edge] += weight * left.logarithms[edge];
            sums.shares[edge] += weight * left.shares[edge];
        }
    }
    void add(const LeftOver& left) {
        add(left, 1.0F);
        count += 1.0F;
    }
    void add(const Evidence& other, float weight) {
        add(other.sums, weight);
        count += weight * other.count;
    }
    bool isEmpty() const { return count <= 0.0F; }
    float meanLogarithm(size_t edge) const {
        return isEmpty() ? 0.0F : sums.logarithms[edge] / count;
    }
};

// The least mean, between the deviations tried by a parabola. They grow by steps of one ratio or nearly
// so; between two of them it goes on linearly.
EdgeShape likeliestShape(const Evidence& near, const Evidence& whole) {
    constexpr size_t kCount = kTriedSigmas.size();
    std::array<float, kCount> means{};
    for (size_t edge = 0; edge < kCount; ++edge) {
        means[edge] = near.meanLogarithm(edge) + kWholeOutline * whole.meanLogarithm(edge) +
                      kSofter * static_cast<float>(edge);
    }
    const auto best =
        static_cast<size_t>(std::min_element(means.begin(), means.end()) - means.begin());
    EdgeShape shape{kTriedSigmas[best], 1.0F};
    if (!near.isEmpty()) {
        shape.unexplained = near.sums.shares[best] / near.count;
    }
    if (best > 0 && best + 1 < kCount) {
        const float before = means[best - 1] - means[best];
        const float after = means[best + 1] - means[best];
        const float offset =
            before + after > 0.0F ? 0.5F * (before - after) / (before + after) : 0.0F;
        const size_t other = offset < 0.0F ? best - 1 : best + 1;
        shape.sigma += std::fabs(offset) * (kTriedSigmas[other] - kTriedSigmas[best]);
    }
    return shape;
}

class Windows {
  public:
    Windows(const OutlineBand& band, const std::vector<float>& colours)
        : m_band(band), m_colours(colours) {
        m_alphas.reserve(band.distance.size());
        for (const float distance : smoothed(band.pixels, band.distance)) {
            m_alphas.push_back(triedAlphas(distance));
        }
    }

    LeftOver around(int x, int y) const {
        const PixelRuns& pixels = m_band.pixels;
        EdgeWindow window(&m_colours[3 * static_cast<size_t>(pixels.find(y, x)->numberOf(x))]);
        const int bottom = std::min(y + kRadius + 1, pixels.height());
        const int end = pixels.firstOf(bottom);
        for (int number = pixels.firstOf(std::max(y - kRadius, 0)); number < end; ++number) {
            const PixelRun& run = pixels.runs()[static_cast<size_t>(number)];
            const int right = std::min(x + kRadius + 1, run.end);
            for (int column = std::max(x - kRadius, run.begin); column < right; ++column) {
                const auto pixel = static_cast<size_t>(run.numberOf(column));
                window.add(m_alphas[pixel], &m_colours[3 * pixel]);
            }
        }
        return window.leftOver();
    }

  private:
    const OutlineBand& m_band;
    const std::vector<float>& m_colours;
    std::vector<TriedEdges> m_alphas;
};

}  // namespace

EdgeShapes::EdgeShapes(const OutlineBand& band, const std::vector<float>& colours,
                       const EdgeShapes* finer, const std::function<void()>& checkpoint)
    : m_squares(band.pixels.width(), band.pixels.height()) {
    const Windows windows(band, colours);
    Squares<Evidence, kSquare> evidence(band.pixels.width(), band.pixels.height());
    for (const PixelRun& run : band.pixels.runs()) {
        checkpoint();
        for (int x = run.begin; x < run.end; ++x) {
            if ((x + run.row) % kEverySecond == 0 &&
                std::fabs(band.distance[static_cast<size_t>(run.numberOf(x))]) < kNear) {
                evidence.at(x / kSquare, run.row / kSquare).add(windows.around(x, run.row));
            }
        }
    }
    Evidence whole;
    evidence.forEach([&](const Evidence& here, int, int) { whole.add(here, 1.0F); });
    const Squares<Evidence, kSquare> near = pooled(evidence, kPool);
    const EdgeShape common = likeliestShape({}, whole);
    near.forEach([&](const Evidence& here, int column, int row) {
        m_squares.at(column, row) = here.isEmpty() ? common : likeliestShape(here, whole);
    });
    if (finer != nullptr) {
        takeOver(*finer);
    }
}

void EdgeShapes::takeOver(const EdgeShapes& finer) {
    m_squares.forEach([&](const EdgeShape&, int column, int row) {
        EdgeShape shape = finer.at(static_cast<float>((2 * column + 1) * kSquare) - 0.5F,
                                   static_cast<float>((2 * row + 1) * kSquare) - 0.5F);
        if (shape.sigma < kSoftestMeasured) {
            shape.sigma /= 2.0F;
            m_squares.at(column, row) = shape;
        }
    });
}

EdgeShape EdgeShapes::at(float x, float y) const {
    EdgeShape mix{0.0F, 0.0F};
    m_squares.around(x, y, [&](const EdgeShape& shape, float weight) {
        mix.sigma += weight * shape.sigma;
        mix.unexplained += weight * shape.unexplained;
    });
    return mix;
}
