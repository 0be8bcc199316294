// 4-connected components of a two-valued image, as runs of pixels.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

// Pixels x0 .. x1 - 1 of row y.
struct PixelRun {
    int y;
    int x0;
    int x1;
    int component;
};

struct Component {
    std::int64_t pixels;
    int xMin;
    int xMax;
    int yMin;
    int yMax;
};

// `runs` in raster order; `components` in the order in which a raster scan meets them.
struct Components {
    std::vector<PixelRun> runs;
    std::vector<Component> components;
};

// The components of the pixels with byte `value` in an 8-bit image that holds 0 and 255 only.
Components findComponents(const cv::Mat& image, std::uint8_t value);
