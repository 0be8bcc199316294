// A picture as its file holds it, and what the file says beside the pixels.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

enum class PictureFormat { kBmp, kHeif, kJpeg, kPng, kPnm, kTiff, kWebp };  // kHeif: HEIC and AVIF

// Blocks of bytes in the formats' own forms, empty for none.
struct PictureNotes {
    std::vector<std::uint8_t> profile;  // ICC; without one sRGB is meant
    std::vector<std::uint8_t> exif;  // as the file held it; written it says that pixels are upright
    std::vector<std::uint8_t> xmp;
    std::vector<std::uint8_t> iptc;
    cv::Size2d resolution;  // pixels a millimetre across and down; 0 when not known
};

// What the file held otherwise than the pixels below, for sessions that were made on it (kAsStored in
// engine_colours.h).
struct StoredForm {
    PictureFormat format = PictureFormat::kPng;
    cv::Mat inks;             // CV_8UC4, cyan, magenta, yellow, black, 255 all ink; empty without
    bool timesAlpha = false;  // the colours were seen multiplied by alpha
};

struct Picture {
    // Upright: turned as the camera noted. Grey, or blue, green, red: CV_8UC1, CV_8UC3, CV_16UC1 or
    // CV_16UC3. Inks (CMYK) have become sRGB.
    cv::Mat pixels;
    // 0 transparent to the largest value; CV_8UC1 or CV_16UC1. Empty when nothing is transparent. The
    // pixels are not multiplied by it.
    cv::Mat alpha;
    PictureNotes notes;
    StoredForm stored;
};
