// The picture is measured in squares. Every pixel of the band is compared with the object's and the
// surroundings' colour F and B at the outline next to it: (I - B)(F - B) summed over the pixels of one
// distance, divided by the sum of (F - B)^2, is the profile of alpha over the distance to the outline.
// Noise and texture of F and B scale it and lift it, so that a blurred step of any height and offset
// is fitted: its deviation and the place of its middle are what is looked for.
#include "matting/edge_softness.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "matting/edge_profile.h"

namespace {

constexpr int kReach = EdgeShapes::kReach;
constexpr int kBins = 2 * kReach;
constexpr float kSampleDepth = 9.0F;  // from the outline to where F and B are taken, pixels
constexpr float kLeastDepth = 7.0F;   // nearer to any outline they would hold some of the edge
constexpr float kSigmas[] = {0.3F, 0.45F, 0.6F, 0.8F, 1.05F, 1.4F, 1.9F, 2.5F, 3.3F, 4.4F};
constexpr float kShifts[] = {0.0F, -0.5F, 0.5F, -1.0F, 1.0F, -1.5F, 1.5F, -2.0F, 2.0F, -3.0F, 3.0F};
// Slanting outlines leave some distances without pixels.
constexpr int kLeastFilled = kBins * 2 / 3;
constexpr float kSoftestMeasured = 3.8F;  // beyond it the band is too narrow to tell
constexpr float kLeastEvidence =
    4.0F * 0.01F;  // sum of squared contrasts of a bin; below it noise rules

constexpr float kShiftCost = 0.003F;  // misfit that a pixel of shift has to save

struct Profile {
    std::array<float, kBins> product{};   // sums of (I - B)(F - B)
    std::array<float, kBins> square{};    // sums of (F - B)^2
    std::array<float, kBins> distance{};  // sums of the distance, weighted like the squares
    std::array<float, kBins> count{};

    void add(const Profile& other, float weight) {
        for (size_t bin = 0; bin < kBins; ++bin) {
            product[bin] += weight * other.product[bin];
            square[bin] += weight * other.square[bin];
            distance[bin] += weight * other.distance[bin];
            count[bin] += weight * other.count[bin];
        }
    }
};

// The pixel of the band at a point, if it lies deep enough on the given side; -1 for none.
int deepPixel(const OutlineBand& band, float x, float y, bool inside) {
    const int column = static_cast<int>(std::floor(x + 0.5F));
    const int row = static_cast<int>(std::floor(y + 0.5F));
    const PixelRun* run = band.pixels.find(row, column);
    if (run == nullptr) {
        return -1;
    }
    const int pixel = run->numberOf(column);
    const float depth = band.distance[static_cast<size_t>(pixel)];
    return (inside ? depth : -depth) >= kLeastDepth ? pixel : -1;
}

void addPixel(const OutlineBand& band, const std::vector<float>& colours, int pixel, int x, int y,
              Profile& profile) {
    const auto index = static_cast<size_t>(pixel);
    const AcrossOutline across = band.across[index];
    const float length = std::sqrt(static_cast<float>(across.squaredLength()));
    const float distance = band.distance[static_cast<size_t>(pixel)];
    const bool inside = band.inside[index] != 0;
    // Unit vector from the surroundings into the object.
    const float side = inside ? -1.0F : 1.0F;
    const float nx = side * static_cast<float>(across.dx) / length;
    const float ny = side * static_cast<float>(across.dy) / length;
    const auto sample = [&](float depth) {
        return deepPixel(band, static_cast<float>(x) + nx * (depth - distance),
                         static_cast<float>(y) + ny * (depth - distance), depth > 0.0F);
    };
    const int object = sample(kSampleDepth);
    const int surroundings = object < 0 ? -1 : sample(-kSampleDepth);
    if (surroundings < 0) {
        return;
    }
    float product = 0.0F;
    float square = 0.0F;
    for (size_t channel = 0; channel < 3; ++channel) {
        const float back = colours[3 * static_cast<size_t>(surroundings) + channel];
        const float contrast = colours[3 * static_cast<size_t>(object) + channel] - back;
        product += (colours[3 * index + channel] - back) * contrast;
        square += contrast * contrast;
    }
    const auto bin = static_cast<size_t>(
        std::clamp(static_cast<int>(std::floor(distance)) + kReach, 0, kBins - 1));
    profile.product[bin] += product;
    profile.square[bin] += square;
    profile.distance[bin] += square * distance;
    profile.count[bin] += 1.0F;
}

struct Fit {
    float misfit = 1.0F;
    float height = 0.0F;
};

// Least squares of height and offset of a blurred step to the profile.
Fit fit(const std::array<float, kBins>& alpha, const std::array<float, kBins>& weight,
        const std::array<float, kBins>& distance, float sigma, float shift) {
    float sum = 0.0F;
    float steps = 0.0F;
    float alphas = 0.0F;
    std::array<float, kBins> step{};
    for (size_t bin = 0; bin < kBins; ++bin) {
        step[bin] = blurredEdge((distance[bin] - shift) / sigma);
        sum += weight[bin];
        steps += weight[bin] * step[bin];
        alphas += weight[bin] * alpha[bin];
    }
    steps /= sum;
    alphas /= sum;
    float stepStep = 0.0F;
    float stepAlpha = 0.0F;
    float alphaAlpha = 0.0F;
    for (size_t bin = 0; bin < kBins; ++bin) {
        const float s = step[bin] - steps;
        const float a = alpha[bin] - alphas;
        stepStep += weight[bin] * s * s;
        stepAlpha += weight[bin] * s * a;
        alphaAlpha += weight[bin] * a * a;
    }
    if (stepAlpha <= 0.0F || alphaAlpha <= 0.0F) {
        return {};
    }
    return {std::max(1.0F - stepAlpha * stepAlpha / (stepStep * alphaAlpha), 0.0F),
            stepAlpha / stepStep};
}

float trustIn(const EdgeShape& shape, float pixels) {
    constexpr float kWorstMisfit = 0.1F;
    constexpr float kFullContrast = 0.2F;
    constexpr float kManyPixels = 16.0F * kBins;  // a straight edge across a square
    const float fits = std::max(1.0F - shape.misfit / kWorstMisfit, 0.0F);
    const float contrast = std::min(shape.contrast / kFullContrast, 1.0F);
    return fits * fits * contrast * std::min(pixels / kManyPixels, 1.0F);
}

EdgeShape shapeOf(const Profile& profile) {
    EdgeShape shape;
    std::array<float, kBins> alpha{};
    std::array<float, kBins> distance{};
    std::array<float, kBins> weight{};
    float squares = 0.0F;
    float count = 0.0F;
    int filled = 0;
    for (size_t bin = 0; bin < kBins; ++bin) {
        if (profile.square[bin] >= kLeastEvidence) {
            alpha[bin] = profile.product[bin] / profile.square[bin];
            distance[bin] = profile.distance[bin] / profile.square[bin];
            weight[bin] = profile.square[bin];
            squares += profile.square[bin];
            count += profile.count[bin];
            ++filled;
        }
    }
    if (filled < kLeastFilled) {
        return shape;
    }
    for (const float sigma : kSigmas) {
        for (const float shift : kShifts) {
            Fit tried = fit(alpha, weight, distance, sigma, shift);
            tried.misfit += kShiftCost * std::fabs(shift);
            if (tried.misfit < shape.misfit) {
                shape = {sigma, shift, std::sqrt(squares / count), tried.misfit, 0.0F};
            }
        }
    }
    shape.trust = shape.sigma > 0.0F ? trustIn(shape, count) : 0.0F;
    return shape;
}

// Weighted sums of shapes. Softness is averaged as its inverse: one wrongly soft measure must not
// soften crisp ones.
class MeanShape {
  public:
    void add(const EdgeShape& shape, float weight) {
        m_inverse += weight / shape.sigma;
        m_sum.shift += weight * shape.shift;
        m_sum.contrast += weight * shape.contrast;
        m_sum.misfit += weight * shape.misfit;
        m_sum.trust += weight * shape.trust;
        m_weights += weight;
    }
    EdgeShape mean() const {
        return {m_weights / m_inverse, m_sum.shift / m_weights, m_sum.contrast / m_weights,
                m_sum.misfit / m_weights, m_sum.trust / m_weights};
    }

  private:
    EdgeShape m_sum{0.0F, 0.0F, 0.0F, 0.0F, 0.0F};
    float m_inverse = 0.0F;
    float m_weights = 0.0F;
};

}  // namespace

EdgeShapes::EdgeShapes(const OutlineBand& band, const std::vector<float>& colours,
                       const EdgeShapes* finer, const std::function<void()>& checkpoint)
    : m_columns((band.pixels.width() + kCell - 1) / kCell),
      m_rows((band.pixels.height() + kCell - 1) / kCell),
      m_cells(static_cast<size_t>(m_columns) * static_cast<size_t>(m_rows)) {
    // Three rows of profiles are enough: that of the row under way and its neighbours.
    std::array<std::vector<Profile>, 3> around;
    const auto readRow = [&](int row) {
        std::vector<Profile>& profiles = around[static_cast<size_t>(row % 3)];
        profiles.assign(static_cast<size_t>(m_columns), {});
        const int bottom = std::min((row + 1) * kCell, band.pixels.height());
        for (int number = band.pixels.firstOf(row * kCell); number < band.pixels.firstOf(bottom);
             ++number) {
            const PixelRun& run = band.pixels.runs()[static_cast<size_t>(number)];
            for (int x = run.begin; x < run.end; ++x) {
                addPixel(band, colours, run.numberOf(x), x, run.row,
                         profiles[static_cast<size_t>(x / kCell)]);
            }
        }
    };
    readRow(0);
    for (int row = 0; row < m_rows; ++row) {
        checkpoint();
        if (row + 1 < m_rows) {
            readRow(row + 1);
        }
        for (int column = 0; column < m_columns; ++column) {
            Profile sum;
            for (int v = std::max(row - 1, 0); v <= std::min(row + 1, m_rows - 1); ++v) {
                for (int u = std::max(column - 1, 0); u <= std::min(column + 1, m_columns - 1);
                     ++u) {
                    const float weight = (v == row ? 1.0F : 0.5F) * (u == column ? 1.0F : 0.5F);
                    sum.add(around[static_cast<size_t>(v % 3)][static_cast<size_t>(u)], weight);
                }
            }
            cell(column, row) = shapeOf(sum);
        }
    }
    smooth();
    if (finer != nullptr) {
        takeOver(*finer);
    }
}

// Single squares err, above all where the object's colours vary; the outline's softness changes
// slowly. So each takes the mean of those around by their trust, and a little of the whole outline's.
void EdgeShapes::smooth() {
    constexpr int kAround = 3;
    constexpr float kWholeOutline = 0.05F;
    constexpr float kUnmeasured = 1e-6F;
    MeanShape outline;
    outline.add({1.0F, 0.0F, 0.0F, 1.0F, 0.0F}, kUnmeasured);
    std::vector<std::pair<int, int>> trusted;
    for (int row = 0; row < m_rows; ++row) {
        for (int column = 0; column < m_columns; ++column) {
            if (cell(column, row).trust > 0.0F) {
                outline.add(cell(column, row), cell(column, row).trust);
                trusted.emplace_back(column, row);
            }
        }
    }
    EdgeShape whole = outline.mean();
    whole.shift = 0.0F;
    whole.trust = 0.0F;
    std::vector<MeanShape> means(m_cells.size());
    for (MeanShape& mean : means) {
        mean.add(whole, kWholeOutline);
    }
    for (const auto& [column, row] : trusted) {
        const EdgeShape& shape = cell(column, row);
        for (int v = std::max(row - kAround, 0); v <= std::min(row + kAround, m_rows - 1); ++v) {
            for (int u = std::max(column - kAround, 0);
                 u <= std::min(column + kAround, m_columns - 1); ++u) {
                const int squared = (u - column) * (u - column) + (v - row) * (v - row);
                means[static_cast<size_t>(v) * static_cast<size_t>(m_columns) +
                      static_cast<size_t>(u)]
                    .add(shape, shape.trust / static_cast<float>(1 + squared));
            }
        }
    }
    std::transform(means.begin(), means.end(), m_cells.begin(),
                   [](const MeanShape& mean) { return mean.mean(); });
}

void EdgeShapes::takeOver(const EdgeShapes& finer) {
    for (int row = 0; row < m_rows; ++row) {
        for (int column = 0; column < m_columns; ++column) {
            const EdgeShape shape = finer.at(static_cast<float>((2 * column + 1) * kCell) - 0.5F,
                                             static_cast<float>((2 * row + 1) * kCell) - 0.5F);
            if (shape.sigma < kSoftestMeasured) {
                cell(column, row) = {shape.sigma / 2.0F, shape.shift / 2.0F, shape.contrast,
                                     shape.misfit, shape.trust};
            }
        }
    }
}

EdgeShape EdgeShapes::at(float x, float y) const {
    const float u = std::clamp((x + 0.5F) / kCell - 0.5F, 0.0F, static_cast<float>(m_columns - 1));
    const float v = std::clamp((y + 0.5F) / kCell - 0.5F, 0.0F, static_cast<float>(m_rows - 1));
    const int column = static_cast<int>(u);
    const int row = static_cast<int>(v);
    const int right = std::min(column + 1, m_columns - 1);
    const int below = std::min(row + 1, m_rows - 1);
    const float fx = u - static_cast<float>(column);
    const float fy = v - static_cast<float>(row);
    const auto mix = [](const EdgeShape& a, const EdgeShape& b, float f) {
        return EdgeShape{a.sigma + f * (b.sigma - a.sigma), a.shift + f * (b.shift - a.shift),
                         a.contrast + f * (b.contrast - a.contrast),
                         a.misfit + f * (b.misfit - a.misfit), a.trust + f * (b.trust - a.trust)};
    };
    return mix(mix(cell(column, row), cell(right, row), fx),
               mix(cell(column, below), cell(right, below), fx), fy);
}
