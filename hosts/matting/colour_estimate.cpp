// In squares of the picture, mean F and B and covariances of the colours at both sides of the edge are
// gathered. The colour direction that separates them best is Fisher's, S^-1 (F - B) with S the sum of
// the covariances; along it alpha runs from 0 at B to 1 at F, with the variance 1 / (F - B)' S^-1 (F - B).
#include "matting/colour_estimate.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kNoise = 0.01;   // deviation that any picture's colours have at least, 0 to 1
constexpr double kFewest = 12.0;  // pixels of a side, below which nothing is known of it

// Pixels from the outline from where on nothing of the other side is seen.
float clearDepth(const EdgeShape& shape) {
    constexpr float kMost = static_cast<float>(EdgeShapes::kReach) - 3.0F;
    return std::min(1.5F + 2.0F * shape.sigma, kMost);
}

struct Side {
    std::array<double, 3> sum{};
    std::array<double, 6> products{};
    double count = 0.0;

    void add(const float* colour) {
        const std::array<double, 3> c{static_cast<double>(colour[0]),
                                      static_cast<double>(colour[1]),
                                      static_cast<double>(colour[2])};
        for (size_t i = 0; i < 3; ++i) {
            sum[i] += c[i];
        }
        products[0] += c[0] * c[0];
        products[1] += c[0] * c[1];
        products[2] += c[0] * c[2];
        products[3] += c[1] * c[1];
        products[4] += c[1] * c[2];
        products[5] += c[2] * c[2];
        count += 1.0;
    }
    void add(const Side& other, double weight) {
        for (size_t i = 0; i < 3; ++i) {
            sum[i] += weight * other.sum[i];
        }
        for (size_t i = 0; i < 6; ++i) {
            products[i] += weight * other.products[i];
        }
        count += weight * other.count;
    }
    double mean(size_t channel) const { return sum[channel] / count; }
};

using Matrix = std::array<std::array<double, 3>, 3>;

void addCovariance(const Side& side, Matrix& matrix) {
    constexpr size_t kAt[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    for (size_t i = 0; i < 3; ++i) {
        for (size_t j = 0; j < 3; ++j) {
            matrix[i][j] += side.products[kAt[i][j]] / side.count - side.mean(i) * side.mean(j);
        }
    }
}

// matrix^-1 * right by Cramer's rule; the noise keeps the matrix away from singular.
std::array<double, 3> solved(const Matrix& m, const std::array<double, 3>& right) {
    const double c00 = m[1][1] * m[2][2] - m[1][2] * m[2][1];
    const double c01 = m[0][2] * m[2][1] - m[0][1] * m[2][2];
    const double c02 = m[0][1] * m[1][2] - m[0][2] * m[1][1];
    const double c11 = m[0][0] * m[2][2] - m[0][2] * m[2][0];
    const double c12 = m[0][2] * m[1][0] - m[0][0] * m[1][2];
    const double c22 = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    const double determinant = m[0][0] * c00 + m[1][0] * c01 + m[2][0] * c02;
    return {(c00 * right[0] + c01 * right[1] + c02 * right[2]) / determinant,
            (c01 * right[0] + c11 * right[1] + c12 * right[2]) / determinant,
            (c02 * right[0] + c12 * right[1] + c22 * right[2]) / determinant};
}

constexpr std::array<float, 2> kPool = {1.0F, 0.5F};

struct Sides {
    std::array<Side, 2> sides;  // surroundings, object

    bool isEmpty() const { return sides[0].count + sides[1].count <= 0.0; }
    void add(const Sides& other, float weight) {
        for (size_t side = 0; side < 2; ++side) {
            sides[side].add(other.sides[side], static_cast<double>(weight));
        }
    }
};

}  // namespace

ColourEstimates::Line ColourEstimates::lineBetween(const std::array<double, 3>& surroundings,
                                                   const std::array<double, 3>& contrast,
                                                   const std::array<double, 3>& direction) {
    double certainty = 0.0;
    for (size_t i = 0; i < 3; ++i) {
        certainty += direction[i] * contrast[i];
    }
    Line line;
    if (!(certainty > 0.0)) {
        return line;
    }
    double offset = 0.0;
    for (size_t i = 0; i < 3; ++i) {
        line.slope[i] = static_cast<float>(direction[i] / certainty);
        offset -= direction[i] / certainty * surroundings[i];
    }
    line.offset = static_cast<float>(offset);
    line.certainty = static_cast<float>(certainty);
    return line;
}

ColourEstimates::ColourEstimates(const OutlineBand& band, const std::vector<float>& colours,
                                 const EdgeShapes& shapes, const std::function<void()>& checkpoint)
    : m_lines(band.pixels.width(), band.pixels.height()) {
    Squares<Sides, kSquare> squares(band.pixels.width(), band.pixels.height());
    for (const PixelRun& run : band.pixels.runs()) {
        checkpoint();
        for (int x = run.begin; x < run.end; ++x) {
            const auto pixel = static_cast<size_t>(run.numberOf(x));
            const EdgeShape shape = shapes.at(static_cast<float>(x), static_cast<float>(run.row));
            if (std::fabs(band.distance[pixel]) >= clearDepth(shape)) {
                Sides& sums = squares.at(x / kSquare, run.row / kSquare);
                sums.sides[band.inside[pixel]].add(&colours[3 * pixel]);
            }
        }
    }
    pooled(squares, kPool).forEach([&](const Sides& sums, int column, int row) {
        const auto& [surroundings, object] = sums.sides;
        if (surroundings.count < kFewest || object.count < kFewest) {
            return;
        }
        Matrix spread{};
        std::array<double, 3> contrast{};
        for (size_t i = 0; i < 3; ++i) {
            spread[i][i] = kNoise * kNoise;
            contrast[i] = object.mean(i) - surroundings.mean(i);
        }
        addCovariance(surroundings, spread);
        addCovariance(object, spread);
        m_lines.at(column, row) =
            lineBetween({surroundings.mean(0), surroundings.mean(1), surroundings.mean(2)},
                        contrast, solved(spread, contrast));
    });
}

ColourAlpha ColourEstimates::at(float x, float y, const float* colour) const {
    float sum = 0.0F;
    float certainty = 0.0F;
    m_lines.around(x, y, [&](const Line& line, float share) {
        const float alpha = line.offset + line.slope[0] * colour[0] + line.slope[1] * colour[1] +
                            line.slope[2] * colour[2];
        sum += share * line.certainty * std::clamp(alpha, 0.0F, 1.0F);
        certainty += share * line.certainty;
    });
    return certainty > 0.0F ? ColourAlpha{sum / certainty, certainty} : ColourAlpha{};
}
