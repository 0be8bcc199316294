#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "matting/colour_estimate.h"
#include "matting/edge_softness.h"
#include "matting/outline_band.h"
#include "matting/reduction.h"

namespace {

struct Mask {
    int width;
    int height;
    std::vector<std::uint8_t> values;

    Plane<const std::uint8_t> plane() const { return {values.data(), width, width, height}; }
    bool at(int x, int y) const { return values[static_cast<size_t>(y * width + x)] != 0; }
};

// Discs here and there; 1 and 255 both stand for the object.
Mask randomMask(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    Mask mask{width, height, std::vector<std::uint8_t>(static_cast<size_t>(width * height))};
    for (int disc = 0; disc < 4; ++disc) {
        const int cx = static_cast<int>(random() % static_cast<unsigned>(width));
        const int cy = static_cast<int>(random() % static_cast<unsigned>(height));
        const int radius = static_cast<int>(random() % 12U);
        const auto value = static_cast<std::uint8_t>(disc == 3 ? 0 : 255 >> (7 * (disc % 2)));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= radius * radius) {
                    mask.values[static_cast<size_t>(y * width + x)] = value;
                }
            }
        }
    }
    return mask;
}

int squaredWayAcross(const Mask& mask, int column, int row) {
    int best = INT32_MAX;
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
            if (mask.at(x, y) != mask.at(column, row)) {
                best = std::min(best, (x - column) * (x - column) + (y - row) * (y - row));
            }
        }
    }
    return best;
}

void expectBandOf(const Mask& mask, int reach) {
    const OutlineBand band = outlineBand(mask.plane(), reach, [] {});
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
            const int squared = squaredWayAcross(mask, x, y);
            const PixelRun* run = band.pixels.find(y, x);
            ASSERT_EQ(run != nullptr, squared <= reach * reach) << x << ", " << y;
            if (run == nullptr) {
                continue;
            }
            const auto pixel = static_cast<size_t>(run->numberOf(x));
            const AcrossOutline across = band.across[pixel];
            ASSERT_EQ(across.squaredLength(), squared) << x << ", " << y;
            ASSERT_NE(mask.at(x + across.dx, y + across.dy), mask.at(x, y)) << x << ", " << y;
            const float distance = std::sqrt(static_cast<float>(squared)) - 0.5F;
            ASSERT_EQ(band.distance[pixel], mask.at(x, y) ? distance : -distance);
            ASSERT_EQ(band.inside[pixel] != 0, mask.at(x, y));
        }
    }
}

}  // namespace

TEST(OutlineBand, HoldsAllPixelsNearTheOutlineWithTheirNearestAcross) {
    for (unsigned seed = 0; seed < 12; ++seed) {
        // Higher than a strip, narrower than a word, and single rows and columns.
        expectBandOf(randomMask(37, 150, seed), 1 + static_cast<int>(seed));
        expectBandOf(randomMask(5, 70, seed), 6);
    }
    expectBandOf(randomMask(60, 1, 3), 5);
    expectBandOf(randomMask(1, 60, 3), 5);
    expectBandOf({4, 3, std::vector<std::uint8_t>(12, 1)}, 5);
}

TEST(PixelRuns, GrowByAllNeighbours) {
    PixelRuns pixels(9, 6);
    pixels.add(0, 0, 1);
    pixels.add(0, 4, 6);
    pixels.add(5, 8, 20);
    ASSERT_EQ(pixels.size(), 4);
    const PixelRuns more = grown(pixels, 2);
    for (int row = 0; row < 10; ++row) {
        for (int column = 0; column < 13; ++column) {
            bool near = false;
            for (int y = 0; y < 6; ++y) {
                for (int x = 0; x < 9; ++x) {
                    near |= pixels.find(y, x) != nullptr && std::abs(y + 2 - row) <= 2 &&
                            std::abs(x + 2 - column) <= 2;
                }
            }
            ASSERT_EQ(more.find(row, column) != nullptr, near) << column << ", " << row;
        }
    }
    int number = 0;
    for (const PixelRun& run : more.runs()) {
        ASSERT_EQ(run.first, number);
        number += run.length();
    }
    EXPECT_EQ(number, more.size());
}

// An upright edge between columns of a reduced mask: its distances tell where it lies to a quarter.
TEST(OutlineBand, KnowsPartsOfPixelsInReducedMasks) {
    for (int edge = 20; edge < 28; ++edge) {
        Mask mask{64, 64, {}};
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                mask.values.push_back(x < edge ? 1 : 0);
            }
        }
        const SmallMask quarter = halved(halved(mask.plane()));
        ASSERT_EQ(quarter.full, 16);
        OutlineBand band = outlineBand(quarter.plane(), 4, [] {});
        refineDistances({quarter.covered.data(), 16, 16, 16}, quarter.full, band);
        for (const PixelRun& run : band.pixels.runs()) {
            for (int x = run.begin; x < run.end; ++x) {
                EXPECT_FLOAT_EQ(band.distance[static_cast<size_t>(run.numberOf(x))],
                                static_cast<float>(edge) / 4.0F - static_cast<float>(x) - 0.5F);
            }
        }
    }
}

// Upright edges blurred by a true Gaussian, between colours with noise.
TEST(EdgeShapes, MeasureSoftnessAndTellingColours) {
    for (const double sigma : {0.5, 1.1, 1.5, 2.0, 4.0}) {
        for (const double contrast : {1.0, 0.05}) {
            Mask mask{120, 120, {}};
            std::vector<std::uint8_t> photograph;
            std::mt19937 random(7);
            for (int y = 0; y < 120; ++y) {
                for (int x = 0; x < 120; ++x) {
                    mask.values.push_back(x < 60 ? 1 : 0);
                    const double alpha =
                        contrast * std::erfc((x + 0.5 - 60.0) / (sigma * std::sqrt(2.0))) / 2.0;
                    for (const double front : {200.0, 90.0, 60.0}) {
                        const double noise = static_cast<double>(random() % 7U) - 3.0;
                        photograph.push_back(static_cast<std::uint8_t>(
                            alpha * front + (1.0 - alpha) * 80.0 + noise));
                    }
                }
            }
            const OutlineBand band = outlineBand(mask.plane(), EdgeShapes::kReach, [] {});
            const ColourPlane colours{{photograph.data(), 360, 120, 120}, 3};
            const EdgeShapes shapes(band, coloursOf(colours, 0, band.pixels, 0), nullptr, [] {});
            const EdgeShape shape = shapes.at(60.0F, 60.0F);
            const ColourEstimates estimates(band, coloursOf(colours, 0, band.pixels, 0), shapes,
                                            [] {});
            // A third of the object's colour, (200, 90, 60), over the surroundings'.
            const double third = contrast / 3.0;
            const float mixed[] = {static_cast<float>((80.0 + 120.0 * third) / 255.0),
                                   static_cast<float>((80.0 + 10.0 * third) / 255.0),
                                   static_cast<float>((80.0 - 20.0 * third) / 255.0)};
            const ColourAlpha estimate = estimates.at(60.0F, 60.0F, mixed);
            if (contrast == 1.0) {
                EXPECT_GT(shape.sigma, sigma / 1.1);
                EXPECT_LT(shape.sigma, sigma * 1.1);
                // Noise of a variance of 4 in three channels, beside an edge of some thousand.
                EXPECT_LT(shape.unexplained, 0.02F) << sigma;
                EXPECT_NEAR(static_cast<double>(estimate.alpha), 1.0 / 3.0, 0.02);
                // The contrast's square of 14900 over the variances: twice 4, and 6.5 for any picture.
                EXPECT_NEAR(static_cast<double>(estimate.certainty), 14900.0 / 14.5, 150.0);
            } else {  // six levels in one channel
                EXPECT_GT(shape.unexplained, 0.3F) << sigma;
                EXPECT_LT(estimate.certainty, 10.0F) << sigma;
            }
        }
    }
}
