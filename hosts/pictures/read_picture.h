// Picture files to pixels: JPEG, PNG, WebP, TIFF, HEIC, AVIF, BMP, PPM and PGM, and no others.
//
// The first call that opens a picture loads the libraries that read them, which takes some hundredths
// of a second; a program that never opens one does without. Every call may come from any thread; they take
// turns. While a HEIC or AVIF file is read, what the process prints on standard error is thrown away.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "pictures/picture.h"

enum class Damaged {
    kRefused,
    kAccepted,  // as much as the file gives; what it lacks is grey or black
};

// 192 mebipixels, above any camera's; 8-bit colours take 600 MB.
constexpr std::uint64_t kMostPixels = std::uint64_t{192} << 20U;

struct ReadOptions {
    Damaged damaged = Damaged::kRefused;
    std::uint64_t maxPixels = kMostPixels;  // more are refused before any is decoded
};

// The picture in the bytes of a file; of a file with several, the first or main one. `name` stands for
// the file in messages. Throws PictureError when it cannot be decoded, is of another format or too
// large, and DamagedPicture when it is damaged and that is not accepted.
Picture readPicture(const std::vector<std::uint8_t>& bytes, const std::string& name,
                    const ReadOptions& options = {});

// The whole picture with 8 bits a sample as CV_8UC1, CV_8UC3 or, with alpha, CV_8UC4, whatever its
// profile says.
cv::Mat storedPixels(const Picture& picture);
// CV_8UC1, likewise without alpha.
cv::Mat greyPixels(const Picture& picture);
