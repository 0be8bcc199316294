// The photograph in the form of the host calls.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

struct Photo {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> words;  // host pixel words, alpha 0xFF

    cv::Size size() const { return {width, height}; }
};

// From CV_8UC3 in the order blue, green, red; `name` is for the message that refuses a photograph
// larger than the engine takes.
Photo photoOf(const cv::Mat& image, const std::string& name);

// Pixel words as a four-channel image (blue, green, red, alpha) over the same memory.
cv::Mat asImage(std::vector<std::uint32_t>& words, cv::Size size);
// To be read only.
cv::Mat asImage(const std::vector<std::uint32_t>& words, cv::Size size);

// 32 hexadecimal digits, XXH3 of 128 bits in its canonical order, over the blue, green and red bytes
// of the pixels row by row, which is what the engine is given.
std::string digestOf(const Photo& photo);
// The same of an image, CV_8UC3 or CV_8UC4.
std::string digestOf(const cv::Mat& image);
