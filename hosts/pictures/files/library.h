// The libraries that read and write picture files stand behind this table in a module of their own,
// which is loaded when a picture is opened first. Linked to the programs, they cost every start 35 ms of
// loading some hundred shared libraries and of preparing them, and a help text opens no picture.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

struct PictureLibrary {
    Picture (*read)(const std::vector<std::uint8_t>& bytes, const std::string& name,
                    const ReadOptions& options);
    std::vector<std::uint8_t> (*encode)(const Picture& picture, const std::string& ending,
                                        const WriteOptions& options);
    // CV_8UC3, or empty when the profile says nothing that the pixels do not say without it.
    cv::Mat (*inSrgb)(const cv::Mat& pixels, const std::vector<std::uint8_t>& profile);
    // Pixels of `type` in the colours of profile `to`; without a profile they are sRGB.
    cv::Mat (*converted)(const cv::Mat& pixels, const std::vector<std::uint8_t>& from,
                         const std::vector<std::uint8_t>& to, int type);
};

// Loads it. Throws PictureError when it is not installed beside the program. From any thread.
const PictureLibrary& pictureLibrary();

// What the module gives, by its name.
constexpr const char* kPictureLibraryEntry = "segcore_picture_library";
extern "C" const PictureLibrary* segcore_picture_library();
