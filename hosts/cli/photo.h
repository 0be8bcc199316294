// The photograph in the form of the host calls, and image files in general.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "byte_stream.h"

struct Photo {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> words;  // host pixel words, alpha 0xFF

    cv::Size size() const { return {width, height}; }
};

// The image in a file or on standard input: in colour without alpha, turned upright as its camera
// noted, so that coordinates are those of the displayed photograph.
Photo readPhoto(const std::string& path);

// The image as it is stored, with all its channels.
cv::Mat readImageUnchanged(const std::string& path);

// Pixel words as a four-channel image (blue, green, red, alpha) over the same memory.
cv::Mat asImage(std::vector<std::uint32_t>& words, cv::Size size);

Bytes encodePng(const cv::Mat& image);
