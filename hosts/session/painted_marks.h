// Scribbles painted in a picture, and the requests that they become.
//
// Colours, on a transparent, black, white or grey ground that marks nothing:
//   green  object           (red and blue below 64, green above 191, alike for the others)
//   red    background
//   blue   candidate: may be object, like the inside of a loop
// An image without colour holds marker codes instead: 0 none, 1 background, 2 object, 4 candidate.
//
// Soft edges of strokes and traces of JPEG are ground. What has many pixels of other colours is no
// picture of marks but, say, a photograph, and is refused: more of them than half as many as marks,
// or more than 3 % of the picture.
//
// What follows is for marks that do not look for the whole object; user_marks.h has those that do.
//
// On a photograph without a result the marks make one request, a loop that adds: what is painted as
// object or background is so, candidates are free, and when background but no candidate is painted
// all the rest is candidate. With object marks alone they are a brush instead, since nothing then
// says what is background. The loop's stroke is the hull of its candidates.
//
// On a result they make up to three requests: candidates are a loop that adds, object marks a brush
// that adds, background marks a brush that removes. A brush's stroke is one point in each piece of
// the painting that disagrees with the result: the engine keeps exactly the changes that a stroke
// point lies in, and as it frees the lines between the points, no more of them than needed. Paint
// that says what the result already says asks for nothing.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "session/strokes.h"

// Marker codes, CV_8UC1, from a decoded picture of the photograph's size with 1 to 4 channels; `name`
// is the picture's for messages. Throws UserError for what is no picture of marks.
cv::Mat paintedMarks(cv::Mat picture, const std::string& name, cv::Size photo);

// The request on a photograph without a result.
Request firstPaintedRequest(const cv::Mat& painted);

// The request of one code on a result (CV_8UC1, 255 object); none when it asks for nothing.
std::optional<Request> paintedRequest(const cv::Mat& codes, int code, const cv::Mat& result);
