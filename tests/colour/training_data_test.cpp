#include "colour/training_data.h"

#include <gtest/gtest.h>

#include <numeric>

#include "colour/samples.h"
#include "support/image_bytes.h"

TEST(TrainingData, RoutesByLabelInRasterOrderAndFillsUpToFive) {
    Bytes bytes(4 * 2 * 3);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    const ImagePtr image = imageOf(4, 2, 3, bytes);
    Samples foreground{9, {1, 1, 1}};  // left over from before
    Samples background;
    const pixelVal filler = {10, 20, 30};
    const auto extract = [&](const Bytes& codes) {
        extractTrainingData(image.get(), imageOf(4, 2, 1, codes).get(), foreground, background);
    };
    extract({2, 0, 4, 3, 5, 2, 255, 0});
    EXPECT_EQ(foreground, (Samples{{0, 1, 2}, {6, 7, 8}, {15, 16, 17}, filler, filler}));
    EXPECT_EQ(background, (Samples{{9, 10, 11}, filler, filler, filler, filler}));
    extract({1, 3, 1, 3, 1, 3, 4, 0});
    EXPECT_EQ(background.size(), 6U);
    extractTrainingData(image.get(), nullptr, foreground, background);
    EXPECT_EQ(foreground, Samples(5, filler));
    EXPECT_EQ(background, Samples(5, filler));
}
