// Outlines and paths as text.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "session/mask_contours.h"

// A document of the photograph's size with one filled path: drawn at that size it is the mask.
std::string asSvg(const std::vector<Contour>& contours, cv::Size photo);

// {"width": W, "height": H, "contours": [[[x, y], ...], ...], "parents": [-1, ...]}, a parent for
// each contour: the index of the one right around it. With "crop": [left, top, width, height] when
// pictures of the object show that part of the photograph; contours are the photograph's all the same.
std::string asJson(const std::vector<Contour>& contours, cv::Size photo,
                   const std::optional<cv::Rect>& crop = {});

// One open path through the middle of pixels; in JSON {"width": W, "height": H,
// "path": [[x, y], ...]}.
std::string pathAsSvg(const std::vector<cv::Point>& path, cv::Size photo);
std::string pathAsJson(const std::vector<cv::Point>& path, cv::Size photo);
