// Picture files that the program writes.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "pictures/picture_format.h"

// In the format that the file's ending tells. Throws std::runtime_error when that fails.
void writePicture(const std::string& file, const cv::Mat& image, PictureContent content);
