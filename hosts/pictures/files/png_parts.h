// The parts (chunks) of a PNG file, as far as libvips leaves them to others.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

// The first fault of a file that begins as PNG does, in a few words: it ends early, or a check sum is
// wrong, those of notes beside the picture included. The library reads on past either.
std::optional<std::string> pngDamage(const std::vector<std::uint8_t>& bytes);

// A file with the place of its left upper pixel in the picture that it was cropped from (oFFs).
std::vector<std::uint8_t> pngWithPosition(std::vector<std::uint8_t> png, cv::Point position);

// A file that tells no size of a pixel (pHYs).
std::vector<std::uint8_t> pngWithoutResolution(std::vector<std::uint8_t> png);

// The same file with check sums that fit, as far as it goes: the library reads no further than to a
// wrong one, and much of the picture can lie behind it.
std::vector<std::uint8_t> withRightCheckSums(std::vector<std::uint8_t> bytes);
