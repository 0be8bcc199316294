// Where in a box or loop the object is looked for first. What the engine finds depends on the pixels
// that it starts with as probable object: a box full of background may lead it to the background. So
// several starts are tried on a small copy of the photograph, where a request takes a quarter of the
// time, and the one whose result its colours set apart best is taken.
//
// A start is a shape centred in the region's bounding rectangle: |u|^p + |v|^p < 1, with u and v from
// -1 to 1 over `size` times the rectangle, cut off at the region. A loop follows its object, so its one
// start is the loop itself without a rim, which is seldom object.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "session/photo.h"

struct RegionStart {
    const char* name;  // in session files
    double size;       // of the rectangle's sides
    int power;         // 2 an ellipse, 4 a rectangle with round corners; 0 a rectangle; -1 the loop's
};

// The pixels deeper in the loop than a tenth of its greatest depth.
constexpr RegionStart kLoopStart{"inset", 0.1, -1};

// From what leaves most to the engine to what leaves least. Where a region holds more than its object
// the small ones win, and where the object fills it the large ones.
constexpr std::array<RegionStart, 10> kBoxStarts{{
    {"whole", 1.0, 0},
    {"rounded", 1.0, 4},
    {"ellipse", 1.0, 2},
    {"ellipse-90", 0.9, 2},
    {"ellipse-80", 0.8, 2},
    {"ellipse-70", 0.7, 2},
    {"middle-85", 0.85, 0},
    {"middle-70", 0.7, 0},
    {"middle-60", 0.6, 0},
    {"middle-50", 0.5, 0},
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
// around it, in nats a pixel; higher is better. It is the mutual information of a pixel's colour and
// its being object: the nats that knowing the colour saves in saying which pixels are object. Objects
// seldom run along the sides of the rectangle that somebody drew around them, so half of the share of
// its sides that they take is subtracted.
double separation(const Photo& photo, const cv::Mat& region, const cv::Mat& mask);
