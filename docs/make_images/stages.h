// One request, stage by stage, with a picture of what each stage made.
#pragma once

#include <opencv2/core.hpp>
#include <string>

// Cuts the object in `box` (photo pixels, right and bottom exclusive) out of a BGR photograph of
// more than 320 x 240 pixels and writes the pictures into `folder`, the outline's band in `detail`
// only. Returns the mask, 255 object.
cv::Mat paintStages(const cv::Mat& photo, const cv::Rect& box, const cv::Rect& detail,
                    const std::string& folder);
