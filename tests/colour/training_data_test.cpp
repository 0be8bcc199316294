#include "colour/training_data.h"

#include <gtest/gtest.h>

#include <numeric>

#include "colour/samples.h"
#include "history/marker.h"
#include "support/image_bytes.h"

namespace {

// Bytes start, start + 1, ... in raster order.
ImagePtr counting(int width, int height, int channels, int start) {
    Bytes bytes(static_cast<std::size_t>(width * height * channels));
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(start));
    return imageOf(width, height, channels, bytes);
}

class TrainingData : public testing::Test {
  protected:
    void TearDown() override {
        VORNSEMarker::dellocator();
        VORNSEMarker::m_isGreyScale = false;
    }
    void extract(const Bytes& codes) {
        extractTrainingData(image.get(), imageOf(4, 2, 1, codes).get(), foreground, background);
    }

    const ImagePtr image = counting(4, 2, 3, 0);
    Samples foreground{9, {1, 1, 1}};  // left over from before
    Samples background;
    const pixelVal filler = {10, 20, 30};
};

}  // namespace

TEST_F(TrainingData, RoutesByLabelInRasterOrderAndFillsUpToFive) {
    extract({2, 0, 4, 3, 5, 2, 255, 0});
    EXPECT_EQ(foreground, (Samples{{0, 1, 2}, {6, 7, 8}, {15, 16, 17}, filler, filler}));
    EXPECT_EQ(background, (Samples{{9, 10, 11}, filler, filler, filler, filler}));
    extract({1, 3, 1, 3, 1, 3, 4, 0});
    EXPECT_EQ(background.size(), 6U);
    extractTrainingData(image.get(), nullptr, foreground, background);
    EXPECT_EQ(foreground, Samples(5, filler));
    EXPECT_EQ(background, Samples(5, filler));
}

TEST_F(TrainingData, GreySamplesTakeTheirTextureFromTheRegionsPlace) {
    VORNSEMarker::m_isGreyScale = true;
    VORNSEMarker::m_texHor = counting(9, 9, 1, 0).release();
    VORNSEMarker::m_texVer = counting(9, 9, 1, 100).release();
    VORNSEMarker::m_xMinBBox = 5;
    VORNSEMarker::m_yMinBBox = 7;
    extract({2, 0, 0, 0, 0, 0, 0, 1});
    EXPECT_EQ(foreground[0], (pixelVal{0, 68, 168}));   // at (5, 7)
    EXPECT_EQ(background[0], (pixelVal{21, 80, 180}));  // at (8, 8)
}
