// What the engine prepares once a photograph: working image, grey test, texture, neighbour links.
#include <cmath>
#include <random>

#include "engine/engine_test.h"

namespace {

using PreparationTest = EngineTest;

TEST_F(PreparationTest, LargePhotographIsReducedToTheWorkingSize) {
    // Blocks of 2 x 2 pixels with the blue values 10, 20, 30, 40: bilinear reduction by 2 averages.
    const VORNSEHybrid& engine = start(640, 480, [](int x, int y) {
        return 0xFF0000U + static_cast<std::uint32_t>(10 + 10 * (x % 2) + 20 * (y % 2));
    });
    EXPECT_EQ(g_imageResizeFactor, 2.0F);
    EXPECT_EQ(engine.m_width, 320);
    EXPECT_EQ(engine.m_height, 240);
    EXPECT_EQ(VORNSEMarker::m_width, 320);
    EXPECT_EQ(VORNSEMarker::m_height, 240);
    EXPECT_EQ(rowOf(VORNSEMarker::m_srcImage, 100)[3 * 200], 25);
    EXPECT_EQ(rowOf(VORNSEMarker::m_srcImage, 100)[3 * 200 + 2], 255);
}

TEST_F(PreparationTest, MeanChannelDifferenceOfOneIsColour) {
    const auto isGrey = [this](std::uint32_t first, std::uint32_t second) {
        start(2, 1, [=](int x, int) { return x == 0 ? first : second; });
        EXPECT_EQ(pHybrid->greyScaleTest(VORNSEMarker::m_srcImage), VORNSEMarker::m_isGreyScale);
        EXPECT_EQ(VORNSEMarker::m_texHor != nullptr, VORNSEMarker::m_isGreyScale);
        return VORNSEMarker::m_isGreyScale;
    };
    EXPECT_TRUE(isGrey(0x050505U, 0x070707U));
    EXPECT_TRUE(isGrey(0x060505U, 0x050505U));   // 1 over 2 pixels
    EXPECT_FALSE(isGrey(0x060505U, 0x050605U));  // 2 over 2 pixels
    EXPECT_FALSE(isGrey(0x050506U, 0x050505U));  // channel 0 counts in both differences
}

TEST_F(PreparationTest, TextureTakesDifferencesToTheRightAndUpperNeighbour) {
    const int values[3][4] = {{10, 20, 40, 80}, {11, 25, 35, 100}, {0, 5, 10, 15}};
    start(4, 3, [&](int x, int y) { return greyWord(values[y][x]); });
    // Last column: horizontally the left difference; vertically that of byte 3 of the rows, which
    // is pixel 1. Pixel (3, 0) stays 0.
    const int horizontal[3][4] = {{10, 20, 40, 0}, {14, 10, 65, 65}, {5, 5, 5, 5}};
    const int vertical[3][4] = {{1, 5, 5, 0}, {1, 5, 5, 5}, {11, 20, 25, 20}};
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(rowOf(VORNSEMarker::m_texHor, y)[x], horizontal[y][x]) << x << ' ' << y;
            EXPECT_EQ(rowOf(VORNSEMarker::m_texVer, y)[x], vertical[y][x]) << x << ' ' << y;
        }
    }
}

TEST_F(PreparationTest, NeighbourLinksEqualThoseComputedPairByPair) {
    std::mt19937 random{1};
    const int width = 9;
    const int height = 6;
    const VORNSEHybrid& engine = start(
        width, height, [&](int, int) { return static_cast<std::uint32_t>(random() & 0xFFFFFF); });
    const auto channel = [](int x, int y, int c) {
        return static_cast<int>(rowOf(VORNSEMarker::m_srcImage, y)[3 * x + c]);
    };
    const auto inside = [](int x, int y) { return x >= 0 && y >= 0 && x < width && y < height; };
    const int offsets[4][2] = {{-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
    double sum = 0.0;
    int pairs = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (const auto& [dx, dy] : offsets) {
                if (inside(x + dx, y + dy)) {
                    ++pairs;
                    for (int c = 0; c < 3; ++c) {
                        sum += std::pow(channel(x, y, c) - channel(x + dx, y + dy, c), 2);
                    }
                }
            }
        }
    }
    const double beta = 1.0 / (2.0 * sum / pairs);
    EXPECT_EQ(engine.m_beta, beta);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int slot = 0; slot < 4; ++slot) {
                const int qx = x + offsets[slot][0];
                const int qy = y + offsets[slot][1];
                const float link = engine.m_nLinks[4 * (y * width + x) + slot];
                if (inside(qx, qy)) {
                    float f[3];
                    for (int c = 0; c < 3; ++c) {
                        const double d = std::abs(channel(x, y, c) - channel(qx, qy, c));
                        f[c] = expf(-static_cast<float>(d * d * beta));
                    }
                    const double diagonal = static_cast<double>(f[0]) * 0.7071067932881648 *
                                            static_cast<double>(f[1]) * static_cast<double>(f[2]);
                    EXPECT_EQ(link,
                              slot % 2 == 1 ? static_cast<float>(diagonal) : f[0] * f[1] * f[2]);
                } else if (y > 0 || slot != 3 || x == 0 || x == width - 1) {
                    EXPECT_EQ(link, 0.0F) << x << ' ' << y << ' ' << slot;
                }
            }
        }
    }
}

}  // namespace
