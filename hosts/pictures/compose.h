// Pictures on top of others. From any thread.
#pragma once

#include <opencv2/core.hpp>

#include "pictures/picture.h"

// A picture of one colour: blue, green, red in sRGB.
Picture plainPicture(cv::Size size, const cv::Vec3b& colour);

// The middle of a picture, scaled so that it just covers the size.
Picture covering(const Picture& picture, cv::Size size);

// The part inside `part`, which lies within the picture.
Picture cropped(const Picture& picture, const cv::Rect& part);

// `top` where it is opaque and `ground` where it is not, of equal sizes. The result has the depth,
// profile and notes of `top`, to which the colours of `ground` are converted; but a grey picture on
// another that is not grey becomes one in sRGB. It is transparent only where both are.
Picture over(const Picture& top, const Picture& ground);
