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

// Finds the components of one of two values. The image comes row by row, in bytes 0 and 255.
class ComponentSearch {
  public:
    explicit ComponentSearch(std::uint8_t value) : m_value(value) {}

    // The next row, from the top down.
    void add(const std::uint8_t* row, int width);
    // After the last row; the search is used up.
    Components finish();

  private:
    void joinWithRowAbove(std::size_t firstOfRow);

    std::uint8_t m_value;
    int m_y = 0;
    std::size_t m_above = 0;  // first run of the row above
    std::vector<PixelRun> m_runs;
};

// The components of the pixels with byte `value` in an 8-bit image that holds 0 and 255 only.
Components findComponents(const cv::Mat& image, std::uint8_t value);
