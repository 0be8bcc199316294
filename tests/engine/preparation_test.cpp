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
    EXPECT_EQ(cv::Size(engine.m_width, engine.m_height), cv::Size(320, 240));
    EXPECT_EQ(cv::Size(VORNSEMarker::m_width, VORNSEMarker::m_height), cv::Size(320, 240));
    const cv::Mat3b working = cv::cvarrToMat(VORNSEMarker::m_srcImage);
    EXPECT_EQ(working(100, 200), cv::Vec3b(25, 0, 255));
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
    EXPECT_EQ(bytesOf(VORNSEMarker::m_texHor), (Bytes{10, 20, 40, 0,   //
                                                      14, 10, 65, 65,  //
                                                      5, 5, 5, 5}));
    EXPECT_EQ(bytesOf(VORNSEMarker::m_texVer), (Bytes{1, 5, 5, 0,  //
                                                      1, 5, 5, 5,  //
                                                      11, 20, 25, 20}));
}

TEST_F(PreparationTest, NeighbourLinksEqualThoseComputedPairByPair) {
    std::mt19937 random{1};
    const Area image{0, 0, 9, 6};
    const VORNSEHybrid& engine = start(image.width, image.height, [&](int, int) {
        return static_cast<std::uint32_t>(random() & 0xFFFFFF);
    });
    const cv::Mat3b pixels = cv::cvarrToMat(VORNSEMarker::m_srcImage);
    const auto forEachLink = [&](auto visit) {
        const cv::Point steps[] = {{-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
        for (int i = 0; i < 4 * image.area(); ++i) {
            const cv::Point p(i / 4 % image.width, i / 4 / image.width);
            visit(i, p, p + steps[i % 4]);
        }
    };
    double sum = 0.0;
    int pairs = 0;
    forEachLink([&](int, cv::Point p, cv::Point q) {
        if (image.contains(q)) {
            ++pairs;
            sum += cv::norm(pixels(p), pixels(q), cv::NORM_L2SQR);
        }
    });
    const double beta = 1.0 / (2.0 * sum / pairs);
    EXPECT_EQ(engine.m_beta, beta);
    forEachLink([&](int i, cv::Point p, cv::Point q) {
        const float link = engine.m_nLinks[i];
        if (image.contains(q)) {
            float f[3];
            for (int c = 0; c < 3; ++c) {
                const double d = pixels(p)[c] - pixels(q)[c];
                f[c] = expf(-static_cast<float>(d * d * beta));
            }
            const double diagonal = static_cast<double>(f[0]) * 0.7071067932881648 *
                                    static_cast<double>(f[1]) * static_cast<double>(f[2]);
            EXPECT_EQ(link, i % 2 == 1 ? static_cast<float>(diagonal) : f[0] * f[1] * f[2]);
        } else if (p.y > 0 || i % 4 != 3 || p.x == 0 || p.x == image.width - 1) {
            EXPECT_EQ(link, 0.0F) << p << ' ' << i % 4;
        }
    });
}

}  // namespace
