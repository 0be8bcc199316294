// The line that a person draws through the middle of a region.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

// The way through the part of `core` that hangs together with `middle`: from A, the pixel farthest
// from the middle, over the middle to B, the pixel farthest from A, where distances are those of
// ways within the core. Every pixel of it is listed, each beside the one before it or at its
// corner; of equally far pixels the first row by row is taken. `core` is CV_8UC1, not 0 inside,
// with no pixel of it on the border of the picture; `middle` is inside.
std::vector<cv::Point> pathAlongCore(const cv::Mat& core, cv::Point middle);
