// Search for flat margins of the working region.
#pragma once

#include <opencv2/core.hpp>

// The part of the region that flat margins leave, or the whole region where there is no doubt-free
// margin. `magnitude` is the gradient magnitude (CV_32F), `pixels` the region (CV_8UC3), `labels`
// its label codes (CV_8UC1), all of one size. Pixels labelled as fixed object always lie strictly
// inside the result.
cv::Rect searchMargins(const cv::Mat& magnitude, const cv::Mat& pixels, const cv::Mat& labels);
