// A robot in the place of a person who corrects a mask: it looks for the largest mistake and paints
// over the middle of it.
//
// A wrong region is one of pixels that miss in the mask, or of pixels that are too many, whose
// pixels hang together at their sides. Of equally large ones it takes the one that comes first, row
// by row. The photograph's border counts as an edge of the region. The stroke goes through the
// pixel deepest inside (again the first one) and along the core around it, which is where the
// region's edge is at least half as far away. Its radius is at most 1 % of the photograph's mean
// side, the brush that people use, and at most half the depth, and so small that nothing is painted
// outside the region.
//
// Measuring with such a robot follows Nickisch, Rother, Kohli and Rhemann, Learning an interactive
// segmentation system, 2010.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "session/step.h"

// The next stroke on `mask` (255 object), a brush that adds or removes, in photograph pixels; none
// when nothing is wrong. `truth` holds 255 for the object, 0 for the background, and what does not
// count as wrong elsewhere. Both CV_8UC1 of one size. The same masks give the same stroke.
std::optional<Step> robotStroke(const cv::Mat& mask, const cv::Mat& truth);
