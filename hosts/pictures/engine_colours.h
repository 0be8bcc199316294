// The pixels of a picture as colours of eight bits for the engine. From any thread.
#pragma once

#include <opencv2/core.hpp>

#include "pictures/picture.h"

enum class Colours {
    // By the picture's profile, relative colorimetric with black point compensation. A profile whose
    // colours are those of sRGB to a level, one for other pixels than the picture's and a broken one
    // change nothing, so that the pixels stay as they are. 16 bits are rounded to 8.
    kSrgb,
    // As the file holds them, whatever its profile says. This is what sessions without a word on
    // colours were made on, so every byte counts: 16 bits lose their lower half, save in a TIFF file
    // in colour, where they are rounded; in a TIFF file with an alpha that calls itself so, 8 bits are multiplied by it; inks
    // become colours by a plain formula.
    kAsStored,
};

// CV_8UC3 in the order blue, green, red; alpha is left out.
cv::Mat engineColours(const Picture& picture, Colours colours);
