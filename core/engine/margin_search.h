// Search for flat margins of the working region: strips along its sides that are background beyond
// doubt, so that the graph and the colour models need not cover them.
#pragma once

#include <opencv2/core.hpp>

// The part of the region that its flat margins leave, or the whole region where there is no margin
// or any doubt about it. Reads the type of the current stroke: only a loop or box that adds cuts.
//
//   magnitude  gradient magnitude of the region's grey values, CV_32FC1
//   pixels     the region, CV_8UC3
//   labels     its label codes, CV_8UC1; all three of one size
//
// A result other than the whole region keeps at least half of either side and of the background
// labels, and its outermost lines, which become background, hold neither fixed object nor, on a
// side that was not cut, anything but background.
cv::Rect searchMargins(const cv::Mat& magnitude, const cv::Mat& pixels, const cv::Mat& labels);
