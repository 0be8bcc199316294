// Marks become host calls. Every host draws its strokes here, so that the same marks are the same
// request everywhere.
//
//   box      its inside, border included, is a candidate for the object; the stroke is its outline
//   loop     its inside, border included, is a candidate for what is added or removed; the stroke
//            is the polygon of its corners
//   brush    the discs along its path are object or background; the stroke is the path, a point for
//            every pixel, since the engine keeps a change only where the stroke touches it. The
//            stroke runs back to its start: the engine frees the line from the last point to the
//            first, and that line would cut across whatever an open path bends around
//   edit     the inside of the loop or the discs of the brush become object or background, without
//            segmenting; there is no stroke
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "session/step.h"

constexpr std::size_t kLoopCorners = 3;  // fewest that enclose anything

// What setCurrentMarkerVector and setMarkerImage take.
struct Request {
    std::vector<cv::Point> stroke;
    cv::Mat markers;  // CV_8UC1 of the photograph's size, marker codes
    int strokeType = 0;
};

// What a mark covers. It is kept as a part of the photograph, since most strokes cover little of it.
struct Drawing {
    cv::Rect where;  // the part, inside the photograph
    cv::Mat inside;  // CV_8UC1 of its size, not 0 on the mark
};

// For boxes, loops and brushes; throws as requestFor does. `wider` is added to a brush's radius.
Drawing drawingOf(const Step& step, cv::Size photo, int wider = 0);

// For boxes, loops and brushes. Points outside the photograph and shapes with too few points are
// errors.
Request requestFor(const Step& step, cv::Size photo);

// How far around a mark, of the photograph's mean side, the search for a whole object takes the mark
// for a better guess than the last result: what is wrong is seldom as thin as the stroke through it.
constexpr double kMarkSpread = 0.03;

// That in pixels.
int spreadReach(cv::Size photo);

// The two shapes alone, on one channel: the discs along a path, and a loop's inside with its
// border.
void drawBrush(cv::Mat& markers, const std::vector<cv::Point>& path, int radius, int code);
void fillLoop(cv::Mat& markers, const std::vector<cv::Point>& corners, int code);

void requireInside(const std::vector<cv::Point>& points, cv::Size photo);
