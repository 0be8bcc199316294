// Gradient magnitude of a colour image's grey values.
#pragma once

#include <opencv2/core/core_c.h>

#include <opencv2/core.hpp>

// Single-precision magnitude of the 3 x 3 Sobel derivatives; `image` has 3 channels.
cv::Mat gradientMagnitude(const IplImage* image);
