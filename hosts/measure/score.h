// How well a mask agrees with the true one.
#pragma once

#include <opencv2/core.hpp>

struct Score {
    double errorRate;  // wrongly labelled pixels / pixels of the photograph
    double iou;        // object pixels in both / object pixels in either
};

// `mask` holds 0 and 255; `truth` 0, 255, and 128 for pixels that count neither as wrong nor as
// object. Both CV_8UC1 of one size.
Score scoreOf(const cv::Mat& mask, const cv::Mat& truth);
