// What a PNG or BMP file lacks or holds wrongly, and what can be read of it all the same. Each takes a
// file that begins as its format does and tells the first fault in a few words; nothing when the file
// is whole. From any thread. (jpeg_damage.h has the same for JPEG.)
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

// Of the file's parts and their check sums, those of notes beside the picture included.
std::optional<std::string> pngDamage(const std::vector<std::uint8_t>& bytes);
// Of the file's length; a picture in run lengths tells it only while it is read.
std::optional<std::string> bmpDamage(const std::vector<std::uint8_t>& bytes);

// The picture of a damaged file as far as it goes, the rest black; empty when there is nothing of it.
cv::Mat readDamagedPng(const std::vector<std::uint8_t>& bytes, bool asColour);
// The file filled up to the length that its header asks for.
std::vector<std::uint8_t> filledUpBmp(std::vector<std::uint8_t> bytes);
