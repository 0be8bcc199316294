// What a touch-up does at the photograph's right and bottom border.
//
// The engine finds the object on a copy of 76,800 pixels and rounds sizes down on the way there and back.
// So what a request on a result can change ends before these two borders, by up to two pixels more than
// the copy is reduced: 3 pixels at 0.2 megapixels, 14 at 12. A loop around something at the border took
// it out but for a thin line there. The engine's results are what they are, so the session goes on from
// where the engine ends.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "session/strokes.h"

// The part of a photograph, from its upper left corner on, that requests on a result can change.
cv::Size changeablePart(cv::Size photo);

struct BorderMark {
    Drawing drawing;
    bool removes = false;
    bool isCertain = false;  // decides its pixels, as a brush does, where a loop asks
};

// Goes on to the border with what a request made of `before`, both CV_8UC1 with 255 and 0. A pixel beyond
// the changeable part becomes what the nearest pixel inside has become: where that one changed, and where
// a mark covers the pixel beyond, but in the mark's direction only. What a certain mark covers is as it
// says. The marks count in their order.
void carryToBorder(const std::vector<BorderMark>& marks, const cv::Mat& before, cv::Mat& after);
