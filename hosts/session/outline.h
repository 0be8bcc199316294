// Outlines and paths as text.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

// Closed contours of outer and hole borders, in photograph pixels; the corners are pixels of the
// object.
using Outline = std::vector<std::vector<cv::Point>>;

// A document of the photograph's size with one path; its lines run through the middle of pixels.
std::string asSvg(const Outline& outline, cv::Size photo);

// {"width": W, "height": H, "contours": [[[x, y], ...], ...]}
std::string asJson(const Outline& outline, cv::Size photo);

// The same for one open path; in JSON {"width": W, "height": H, "path": [[x, y], ...]}.
std::string pathAsSvg(const std::vector<cv::Point>& path, cv::Size photo);
std::string pathAsJson(const std::vector<cv::Point>& path, cv::Size photo);
