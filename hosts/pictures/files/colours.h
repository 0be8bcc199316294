// Colour profiles (ICC), by Little CMS: relative colorimetric with black point compensation, which moves
// no colour that both sides have and keeps the shadows' detail.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

using Profile = std::vector<std::uint8_t>;

// Eight bits, CV_8UC3; empty when the profile changes nothing: it is that of sRGB, as far as no colour of
// a lattice moves by more than a level, it is for other pixels, or broken.
cv::Mat inSrgb(const cv::Mat& pixels, const Profile& profile);

// Pixels of `type`, with at least as many channels, in the colours of profile `to`. Without a profile, or
// with one for other pixels, they are sRGB.
cv::Mat converted(const cv::Mat& pixels, const Profile& from, const Profile& to, int type);

// sRGB of the same depth from four inks; a usual printer's where there is no profile for them.
cv::Mat coloursOfInks(const cv::Mat& inks, const Profile& profile);
