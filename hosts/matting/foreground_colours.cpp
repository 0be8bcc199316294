// Multi-level estimation (Germer, Uelwer, Conrad and Harmeling 2020, "Fast multi-level foreground
// estimation"): colours F of the object and B of its surroundings such that alpha F + (1 - alpha) B is
// the picture I, both of them smooth, more so where alpha changes. Solved in reductions by powers of
// two, the coarsest first, each the start of the next. Only pixels near soft ones take part.
#include "matting/foreground_colours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "matting/pixel_runs.h"

namespace {

constexpr float kWhole = 65535.0F;
constexpr int kLevels = 7;  // the coarsest one's pixels are as wide as the widest soft edge
constexpr float kSmoothness = 1e-5F;
constexpr float kGradientWeight = 0.1F;
constexpr int kRounds = 4;
constexpr int kNear = 2;         // pixels around the soft ones that take part
constexpr int kMostSamples = 4;  // of a reduced pixel's side; more hardly change its mean

bool isSoft(std::uint16_t alpha) {
    return alpha != 0 && alpha != 65535;
}

PixelRuns softPixels(Plane<const std::uint16_t> alpha) {
    PixelRuns soft(alpha.width, alpha.height);
    for (int y = 0; y < alpha.height; ++y) {
        const std::uint16_t* row = alpha.row(y);
        for (int x = 0; x < alpha.width; ++x) {
            if (isSoft(row[x])) {
                soft.add(y, x, x + 1);
            }
        }
    }
    return soft;
}

// The pixels at most `reach` away, in the same picture.
PixelRuns nearby(const PixelRuns& pixels, int reach) {
    const PixelRuns framed = grown(pixels, reach);
    PixelRuns result(pixels.width(), pixels.height());
    for (const PixelRun& run : framed.runs()) {
        if (run.row >= reach && run.row < pixels.height() + reach) {
            result.add(run.row - reach, run.begin - reach, run.end - reach);
        }
    }
    return result;
}

PixelRuns halved(const PixelRuns& pixels) {
    PixelRuns result((pixels.width() + 1) / 2, (pixels.height() + 1) / 2);
    for (int row = 0; row < result.height(); ++row) {
        int upper = pixels.firstOf(2 * row);
        const int upperEnd = pixels.firstOf(2 * row + 1);
        int lower = upperEnd;
        const int lowerEnd = pixels.firstOf(std::min(2 * row + 2, pixels.height()));
        const auto runAt = [&](int number) -> const PixelRun& {
            return pixels.runs()[static_cast<size_t>(number)];
        };
        while (upper < upperEnd || lower < lowerEnd) {
            const bool takeUpper =
                lower >= lowerEnd || (upper < upperEnd && runAt(upper).begin <= runAt(lower).begin);
            const PixelRun& run = runAt(takeUpper ? upper++ : lower++);
            result.add(row, run.begin / 2, (run.end + 1) / 2);
        }
    }
    return result;
}

template <size_t kChannels>
using Colour = std::array<float, kChannels>;

template <size_t kChannels>
struct Layer {
    PixelRuns pixels;
    std::vector<Colour<kChannels>> picture;
    std::vector<float> alpha;
    std::vector<Colour<kChannels>> front;
    std::vector<Colour<kChannels>> back;
};

template <size_t kChannels, typename Value>
void read(Plane<Value> picture, Plane<const std::uint16_t> alpha, int level,
          Layer<kChannels>& layer) {
    constexpr float kScale = 1.0F / static_cast<float>(std::numeric_limits<Value>::max());
    const int side = 1 << level;
    const int step = std::max(side / kMostSamples, 1);
    layer.picture.reserve(static_cast<size_t>(layer.pixels.size()));
    layer.alpha.reserve(static_cast<size_t>(layer.pixels.size()));
    for (const PixelRun& run : layer.pixels.runs()) {
        for (int column = run.begin; column < run.end; ++column) {
            Colour<kChannels> sum{};
            float alphas = 0.0F;
            float count = 0.0F;
            for (int y = run.row * side + step / 2;
                 y < std::min((run.row + 1) * side, alpha.height); y += step) {
                for (int x = column * side + step / 2;
                     x < std::min((column + 1) * side, alpha.width); x += step) {
                    const Value* pixel = picture.row(y) + static_cast<size_t>(x) * kChannels;
                    for (size_t c = 0; c < kChannels; ++c) {
                        sum[c] += static_cast<float>(pixel[c]);
                    }
                    alphas += static_cast<float>(alpha.row(y)[x]);
                    count += 1.0F;
                }
            }
            count = std::max(count, 1.0F);
            for (float& value : sum) {
                value *= kScale / count;
            }
            layer.picture.push_back(sum);
            layer.alpha.push_back(alphas / (kWhole * count));
        }
    }
}

template <size_t kChannels>
void startFrom(const Layer<kChannels>& coarse, Layer<kChannels>& fine) {
    fine.front.reserve(fine.picture.size());
    fine.back.reserve(fine.picture.size());
    for (const PixelRun& run : fine.pixels.runs()) {
        const PixelRun* parent = coarse.pixels.find(run.row / 2, run.begin / 2);
        for (int x = run.begin; x < run.end; ++x) {
            const auto number = static_cast<size_t>(parent->numberOf(x / 2));
            fine.front.push_back(coarse.front[number]);
            fine.back.push_back(coarse.back[number]);
        }
    }
}

// Sweeps of Gauss and Seidel, forth and back by turns: each pixel gets the F and B that are best
// while its neighbours stay.
template <size_t kChannels>
class Sweeps {
  public:
    explicit Sweeps(Layer<kChannels>& layer) : m_layer(layer) {
        const auto size = static_cast<size_t>(layer.pixels.size());
        m_above.assign(size, -1);
        m_below.assign(size, -1);
        for (const PixelRun& run : layer.pixels.runs()) {
            if (run.row == 0) {
                continue;
            }
            for (int number = layer.pixels.firstOf(run.row - 1);
                 number < layer.pixels.firstOf(run.row); ++number) {
                const PixelRun& upper = layer.pixels.runs()[static_cast<size_t>(number)];
                for (int x = std::max(run.begin, upper.begin); x < std::min(run.end, upper.end);
                     ++x) {
                    m_above[static_cast<size_t>(run.numberOf(x))] = upper.numberOf(x);
                    m_below[static_cast<size_t>(upper.numberOf(x))] = run.numberOf(x);
                }
            }
        }
    }

    void run(int rounds) {
        const std::vector<PixelRun>& runs = m_layer.pixels.runs();
        for (int round = 0; round < rounds; ++round) {
            if (round % 2 == 0) {
                for (const PixelRun& stretch : runs) {
                    for (int x = stretch.begin; x < stretch.end; ++x) {
                        update(stretch, x);
                    }
                }
            } else {
                for (auto stretch = runs.rbegin(); stretch != runs.rend(); ++stretch) {
                    for (int x = stretch->end; x-- > stretch->begin;) {
                        update(*stretch, x);
                    }
                }
            }
        }
    }

  private:
    void update(const PixelRun& stretch, int x) {
        const auto pixel = static_cast<size_t>(stretch.numberOf(x));
        const float alpha = m_layer.alpha[pixel];
        const float rest = 1.0F - alpha;
        Colour<kChannels> fronts{};
        Colour<kChannels> backs{};
        float weights = 0.0F;
        const auto addNeighbour = [&](int number) {
            const auto other = static_cast<size_t>(number);
            const float weight =
                kSmoothness + kGradientWeight * std::fabs(alpha - m_layer.alpha[other]);
            weights += weight;
            for (size_t c = 0; c < kChannels; ++c) {
                fronts[c] += weight * m_layer.front[other][c];
                backs[c] += weight * m_layer.back[other][c];
            }
        };
        if (x > stretch.begin) {
            addNeighbour(static_cast<int>(pixel) - 1);
        }
        if (x + 1 < stretch.end) {
            addNeighbour(static_cast<int>(pixel) + 1);
        }
        if (m_above[pixel] >= 0) {
            addNeighbour(m_above[pixel]);
        }
        if (m_below[pixel] >= 0) {
            addNeighbour(m_below[pixel]);
        }
        if (weights <= 0.0F) {
            return;
        }
        const float ff = alpha * alpha + weights;
        const float fb = alpha * rest;
        const float bb = rest * rest + weights;
        // (alpha^2 + w)((1 - alpha)^2 + w) - (alpha (1 - alpha))^2 without the terms that cancel.
        const float scale = 1.0F / (weights * (alpha * alpha + rest * rest + weights));
        for (size_t c = 0; c < kChannels; ++c) {
            const float f = alpha * m_layer.picture[pixel][c] + fronts[c];
            const float b = rest * m_layer.picture[pixel][c] + backs[c];
            m_layer.front[pixel][c] = std::clamp((bb * f - fb * b) * scale, 0.0F, 1.0F);
            m_layer.back[pixel][c] = std::clamp((ff * b - fb * f) * scale, 0.0F, 1.0F);
        }
    }

    Layer<kChannels>& m_layer;
    std::vector<int> m_above;
    std::vector<int> m_below;
};

template <size_t kChannels, typename Value>
void keep(Plane<Value> picture, Plane<const std::uint16_t> alpha,
          const std::function<void()>& checkpoint) {
    std::vector<PixelRuns> sets;
    sets.push_back(nearby(softPixels(alpha), kNear));
    while (static_cast<int>(sets.size()) < kLevels && sets.back().width() > 1 &&
           sets.back().height() > 1) {
        sets.push_back(nearby(halved(sets.back()), 1));
    }
    Layer<kChannels> layer;
    for (size_t level = sets.size(); level-- > 0;) {
        checkpoint();
        Layer<kChannels> fine;
        fine.pixels = std::move(sets[level]);
        read(picture, alpha, static_cast<int>(level), fine);
        if (level + 1 == sets.size()) {
            fine.front = fine.picture;
            fine.back = fine.picture;
        } else {
            startFrom(layer, fine);
        }
        Sweeps<kChannels>(fine).run(kRounds);
        layer = std::move(fine);
    }
    constexpr auto kScale = static_cast<float>(std::numeric_limits<Value>::max());
    for (const PixelRun& run : layer.pixels.runs()) {
        for (int x = run.begin; x < run.end; ++x) {
            if (!isSoft(alpha.row(run.row)[x])) {
                continue;
            }
            Value* pixel = picture.row(run.row) + static_cast<size_t>(x) * kChannels;
            const Colour<kChannels>& colour = layer.front[static_cast<size_t>(run.numberOf(x))];
            for (size_t c = 0; c < kChannels; ++c) {
                pixel[c] = static_cast<Value>(std::lround(colour[c] * kScale));
            }
        }
    }
}

}  // namespace

template <typename Value>
void keepForeground(Plane<Value> picture, int channels, Plane<const std::uint16_t> alpha,
                    const std::function<void()>& checkpoint) {
    switch (channels) {
        case 1:
            keep<1>(picture, alpha, checkpoint);
            break;
        case 2:
            keep<2>(picture, alpha, checkpoint);
            break;
        case 3:
            keep<3>(picture, alpha, checkpoint);
            break;
        default:
            keep<4>(picture, alpha, checkpoint);
            break;
    }
}

template void keepForeground(Plane<std::uint8_t>, int, Plane<const std::uint16_t>,
                             const std::function<void()>&);
template void keepForeground(Plane<std::uint16_t>, int, Plane<const std::uint16_t>,
                             const std::function<void()>&);
