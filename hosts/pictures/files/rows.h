// The order of samples in picture files is red, green, blue, and that of pixels in memory the reverse.
#pragma once

#include <opencv2/core.hpp>
#include <utility>

// In place; of the first three channels.
template <class Sample>
void swapRedAndBlue(Sample* row, int width, int channels) {
    for (Sample* pixel = row; pixel != row + std::ptrdiff_t{width} * channels; pixel += channels) {
        std::swap(pixel[0], pixel[2]);
    }
}

inline void swapRedAndBlue(cv::Mat& image) {
    for (int y = 0; y < image.rows; ++y) {
        if (image.depth() == CV_16U) {
            swapRedAndBlue(image.ptr<std::uint16_t>(y), image.cols, image.channels());
        } else {
            swapRedAndBlue(image.ptr(y), image.cols, image.channels());
        }
    }
}
