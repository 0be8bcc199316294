// Made photographs with a known object, the same bytes on every machine. Sizes are in pixels.
#pragma once

#include <cstdint>
#include <vector>

struct Scene {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // host pixel words, row by row

    // Whether the pixel belongs to the disc in the middle.
    bool isObject(int x, int y) const;
    // The share of pixels that `mask` (host mask bytes, 0 = object) gets wrong.
    double errorRate(const std::vector<std::uint8_t>& mask) const;
};

// A red disc in the middle of a blue and green gradient with a little noise, at any size.
Scene makeDiscScene(int width, int height);
const Scene& discScene();  // 160 x 120, built once
