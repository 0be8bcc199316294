// The imaging library's C images from bytes and to bytes, row by row without padding.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "support/image.h"

using Bytes = std::vector<std::uint8_t>;

inline ImagePtr imageOf(int width, int height, int channels, Bytes bytes) {
    ImagePtr image = createImage(width, height, channels);
    cv::Mat(height, width, CV_8UC(channels), bytes.data()).copyTo(cv::cvarrToMat(image.get()));
    return image;
}

// None of no image.
inline Bytes bytesOf(const IplImage* image) {
    if (image == nullptr) {
        return {};
    }
    const cv::Mat copy = cv::cvarrToMat(image, true);
    return {copy.datastart, copy.dataend};
}
inline Bytes bytesOf(const ImagePtr& image) {
    return bytesOf(image.get());
}
