// Which photographs of a folder are measured, and which are reported together.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "session/data_set.h"

// Those named by `only`, all for no name, in the order of their names.
std::vector<DataPhoto> chosenPhotos(const DataFolder& folder, const std::vector<std::string>& only);

// Means are taken for large photographs, of more than a megapixel, apart from the others.
bool isLarge(const cv::Mat& image);
