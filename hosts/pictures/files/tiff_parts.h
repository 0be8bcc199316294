// Entries of TIFF files that libvips does not pass on.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

// Whether the file ends before its first directory does, or before a value that this refers to. libtiff
// goes on without such values: without a profile the colours would be others.
bool isTiffCutOff(const std::vector<std::uint8_t>& tiff);

// Whether a file says of its fourth sample that it is alpha, multiplied with the colours or not. Files
// beyond 4 GB do not come here.
bool tiffTellsAlpha(const std::vector<std::uint8_t>& tiff);

// What a TIFF file tells of camera, author, exposure and place as an EXIF block; empty for nothing.
std::vector<std::uint8_t> exifOfTiff(const std::vector<std::uint8_t>& tiff);

// A TIFF file with the position of its left upper pixel in the picture that it was cropped from
// (XPosition and YPosition, in the file's unit of length). Neither may be negative.
std::vector<std::uint8_t> tiffWithPosition(std::vector<std::uint8_t> tiff, cv::Point position);

// A TIFF file with the notes of a camera in `exif`, an EXIF block that may begin with "Exif": what it
// tells of camera, author, exposure and place. Resolution, orientation and the small picture are left
// out. Of a broken block as much as can be read.
std::vector<std::uint8_t> tiffWithExif(std::vector<std::uint8_t> tiff,
                                       const std::vector<std::uint8_t>& exif);
