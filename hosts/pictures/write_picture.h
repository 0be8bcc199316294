// Pixels to picture files. From any thread.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "pictures/picture.h"

struct WriteOptions {
    // 0 (fast) to 9 (small), of PNG and TIFF; JPEG, WebP and AVIF have none.
    int compression = 1;
    // 1 to 100, of JPEG (95 unless given) and AVIF (90); with it WebP loses what is hardly seen, and
    // without it nothing. PNG and TIFF always keep every pixel.
    std::optional<int> quality;
    // Where the picture's left upper pixel lies in the one that it was cropped from. PNG (oFFs) and TIFF
    // (XPosition, YPosition, neither of which can be negative) note it.
    std::optional<cv::Point> offset;
    // Leave out all notes but the profile, which the colours need.
    bool strip = false;
};

// The bytes of a file in the format of an ending from formatFor. Keeps 16 bits in PNG and TIFF files and
// 12 of them in AVIF; other formats get 8. Alpha may have another depth than the pixels. Throws
// PictureError when the format cannot hold the picture: JPEG and BMP nothing that is transparent
// anywhere; JPEG and AVIF end at sides of 65,500 and 16,384 pixels, WebP at 16,383.
std::vector<std::uint8_t> encodePicture(const Picture& picture, const std::string& ending,
                                        const WriteOptions& options = {});

// The same of pixels without notes, with one, three or four channels; the fourth is alpha.
std::vector<std::uint8_t> encodePicture(const cv::Mat& image, const std::string& ending,
                                        const WriteOptions& options = {});
