// Training samples of the two colour models.
#pragma once

#include <opencv2/core/core_c.h>

#include <cstdint>
#include <vector>

#include "colour/color_model.h"
#include "support/export.h"

// Collects the pixels of `image` (3 channels) in raster order: those with an object code in
// `labels` (1 channel, same size) into `foreground`, those with a background code into
// `background`. Both vectors are overwritten, and filled up to five samples with (10, 20, 30). A
// null label image collects nothing. The second and third component of a grey photograph's samples
// come from the texture images of the marker store, at the place that its bounding box gives.
SEGCORE_API void extractTrainingData(const IplImage* image, const IplImage* labels,
                                     std::vector<pixelVal>& foreground,
                                     std::vector<pixelVal>& background);

// The three bytes of a sample.
struct SampleBytes {
    std::uint8_t ch0;
    std::uint8_t ch1;
    std::uint8_t ch2;

    pixelVal value() const {
        return {static_cast<double>(ch0), static_cast<double>(ch1), static_cast<double>(ch2)};
    }
};

// The sample of pixel x of a row. The texture rows are null for a colour image and start at the
// pixel of x = 0 for a grey one.
inline SampleBytes sampleBytes(const std::uint8_t* row, const std::uint8_t* textureHorizontal,
                               const std::uint8_t* textureVertical, int x) {
    const std::uint8_t* pixel = row + kChannels * x;
    if (textureHorizontal == nullptr) {
        return {pixel[0], pixel[1], pixel[2]};
    }
    return {pixel[0], textureHorizontal[x], textureVertical[x]};
}

inline pixelVal sampleAt(const std::uint8_t* row, const std::uint8_t* textureHorizontal,
                         const std::uint8_t* textureVertical, int x) {
    return sampleBytes(row, textureHorizontal, textureVertical, x).value();
}
