// Pixels to picture files. From any thread.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

// The bytes of a file in the format of an ending from formatFor. Throws PictureError when the format
// cannot hold the image: JPEG and WebP end at sides of 65,500 and 16,383 pixels.
std::vector<std::uint8_t> encodePicture(const cv::Mat& image, const std::string& ending);
