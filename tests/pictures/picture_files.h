// Picture files for the tests, made from the samples by other means than the writer under test.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "pictures/picture.h"

struct _VipsImage;

using Bytes = std::vector<std::uint8_t>;

Bytes bytesIn(const std::string& path);

// A part of a sample photograph with many colours, 96 x 64, CV_8UC3.
cv::Mat samplePart();
// The same scaled to 16 bits, with lower halves that differ.
cv::Mat wideSamplePart();
// A soft ramp with a fully transparent and a fully opaque side.
cv::Mat ramp(cv::Size size, int depth);

// By libvips; `ending` may hold its options. `change` gets the image before it is written.
Bytes writtenByVips(const cv::Mat& image, const std::string& ending,
                    const std::function<void(_VipsImage*)>& change = {});

// By OpenCV.
Bytes writtenByOpenCv(const cv::Mat& image, const std::string& ending);

double largestDifference(const cv::Mat& a, const cv::Mat& b);
