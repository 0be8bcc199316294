// Fills closed contours pixel by pixel, by the rule of a drawing program.
#pragma once

#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

// 255 where a line from the pixel's middle to the left crosses an odd number of sides, 0 elsewhere.
// Sides run along x or y between pixel corners; CV_8UC1.
inline cv::Mat filledEvenOdd(const std::vector<std::vector<cv::Point>>& contours, cv::Size size) {
    cv::Mat filled = cv::Mat::zeros(size, CV_8UC1);
    for (const std::vector<cv::Point>& corners : contours) {
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const cv::Point a = corners[i];
            const cv::Point b = corners[(i + 1) % corners.size()];
            for (int y = std::min(a.y, b.y); y < std::max(a.y, b.y); ++y) {
                for (int x = a.x; x < size.width; ++x) {
                    filled.at<std::uint8_t>(y, x) ^= 255U;
                }
            }
        }
    }
    return filled;
}
