// The picture of an outline that snaps to edges between a few points.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

// The photograph with the points, the straight lines between them and the cheapest paths between
// them.
cv::Mat paintSnapping(const cv::Mat& photo, const std::vector<cv::Point>& points);
