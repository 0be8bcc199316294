// Which changes of a mask a stroke is good for.
#pragma once

#include <opencv2/core.hpp>

#include "session/strokes.h"

// Makes `found` what it was `before` where it cannot be trusted; both CV_8UC1 with 255 and 0. A person
// corrects the largest mistake that there is. What changes together with the pixels of the stroke is
// that correction, and a change elsewhere of more than twice its size would have been a larger mistake,
// so it is taken back. Nobody who corrects a mask means nothing to be left: then the stroke alone is
// taken out.
void keepTrustedChanges(const cv::Mat& before, const Drawing& stroke, cv::Mat& found);
