// Where in a box or loop the object is looked for first. What the engine finds depends on the pixels
// that it starts with as probable object: a box full of background may lead it to the background. So
// several starts are tried on a small copy of the photograph, where a request takes a quarter of the
// time, and the one whose result its colours set apart best is taken.
//
// A start is a shape centred in the region's bounding rectangle, cut off at the region. A loop follows
// its object, so its one start is the loop itself without a rim, which is seldom object.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <string>

#include "session/photo.h"

enum class StartShape { kRectangle, kEllipse, kInset };

struct RegionStart {
    const char* name;  // in session files
    StartShape shape;
    double
        width;  // of the rectangle's; of an inset both are the depth that it begins at, as a share
    double height;  // of the greatest
};

inline constexpr RegionStart kLoopStart{"inset", StartShape::kInset, 0.1, 0.1};

// Where a box holds more than its object the small ones win, and where the object fills it the large
// ones; standing and lying objects have one each. Six serve as well as ten that were tried, with sizes
// in between and round corners.
inline constexpr std::array<RegionStart, 6> kBoxStarts{{
    {"whole", StartShape::kRectangle, 1.0, 1.0},
    {"ellipse", StartShape::kEllipse, 1.0, 1.0},
    {"middle-70", StartShape::kRectangle, 0.7, 0.7},
    {"middle-50", StartShape::kRectangle, 0.5, 0.5},
    {"upright", StartShape::kRectangle, 0.6, 0.9},
    {"lying", StartShape::kRectangle, 0.9, 0.6},
}};

const RegionStart* regionStartNamed(const std::string& name);  // null when there is none

// CV_8UC1, 255 in the start; `region` (CV_8UC1) is not 0 inside.
cv::Mat insideOf(const RegionStart& start, const cv::Mat& region);

// The size of about 19200 pixels, a quarter of those that the engine works on; that of the photograph
// when it has no more.
cv::Size smallSize(cv::Size photo);
// The photograph in that size. Each pixel is the mean of those that it stands for.
Photo smallCopy(const Photo& photo);

// `mask` (CV_8UC1) at the pixels of another size that a nearest-neighbour reduction would take it
// from, so that reducing it gives `mask` again.
cv::Mat enlargedTo(cv::Size size, const cv::Mat& mask);

// How far the colours of a photograph set the object of `mask` apart within the region and a margin
// around it; higher is better. It is the mutual information of a pixel's colour and its being object:
// the nats a pixel that knowing the colours saves in saying which pixels are object. Objects seldom run
// along the sides of the rectangle that somebody drew around them, so half of the share of its sides
// that they take is subtracted; and they span it, so a tenth of the share of it that they span is added.
double separation(const Photo& photo, const cv::Mat& region, const cv::Mat& mask);
