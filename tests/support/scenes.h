// Made photographs with a known object, the same bytes on every machine. Sizes are in pixels.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Disc {
    int x;
    int y;
    int radius;

    bool contains(int px, int py) const {
        return (px - x) * (px - x) + (py - y) * (py - y) <= radius * radius;
    }
};

struct Scene {
    std::string name;
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // host pixel words, row by row
    std::vector<Disc> discs;            // the object, clipped to the photograph

    bool isObject(int x, int y) const;
    // The share of pixels that `mask` (host mask bytes, 0 = object) gets wrong.
    double errorRate(const std::vector<std::uint8_t>& mask) const;
};

// A red disc in the middle of a blue and green gradient with a little noise, at any size.
Scene makeDiscScene(int width, int height);

// Built once each.
const Scene& discScene();       // 160 x 120
const Scene& largeDiscScene();  // 640 x 480: four times as many pixels as the working image
const Scene& letterboxScene();  // the disc between black bars of 24 rows
const Scene& greyScene();       // the disc without colour
const Scene& lineScene();       // one pixel wide, 90 high
const Scene& islandsScene();    // two discs
const Scene& noiseScene();      // noise alone, no object
const std::vector<const Scene*>& allScenes();
