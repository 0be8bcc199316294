// Painted scribbles as the brush strokes that a user would have made them with.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

struct BrushStroke {
    cv::Mat painted;                // CV_8UC1, 255 where the brush painted
    std::vector<cv::Point> points;  // the brush's way through what it painted
};

// One stroke for each connected component of `scribbles == code`, in the order in which a scan by
// rows meets them. The way of the brush is the longest shortest path through the component (of all
// ends that lie farthest apart), a point for every pixel.
std::vector<BrushStroke> strokesOf(const cv::Mat& scribbles, int code);
