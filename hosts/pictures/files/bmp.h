// BMP files. libvips leaves them to a library that it does not trust, and the format is small.
#pragma once

#include <cstdint>
#include <vector>

#include "pictures/files/read_file.h"

// All that Windows writes: palettes of up to 8 bits, run lengths, 16, 24 and 32 bits with their masks.
Picture readBmp(const PictureFile& file);

// CV_8UC1 or CV_8UC3.
std::vector<std::uint8_t> encodeBmp(const cv::Mat& pixels);
