// The object as a picture of its own, in the photograph's own pixels: their depth, their colours, and
// what their file says beside them.
#pragma once

#include <functional>
#include <opencv2/core.hpp>

#include "matting/matting.h"
#include "pictures/picture.h"
#include "session/output_choice.h"

// How much of each pixel is object, CV_16UC1. `seen` is the photograph as the engine is given it,
// CV_8UC4 or CV_8UC3 in the order blue, green, red; `mask` is CV_8UC1, 0 or not. Without a choice edges
// are hard.
cv::Mat alphaOf(const cv::Mat& seen, const cv::Mat& mask, const OutputChoice& choice,
                const std::function<void()>& checkpoint);

// How much of each pixel is seen: of what is object, feathered if that is the choice, that which is not
// transparent in the photograph. CV_8UC1 or CV_16UC1 as deep as the photograph.
cv::Mat visible(const cv::Mat& alpha, const Picture& photograph, const OutputChoice& choice,
                const std::function<void()>& checkpoint);

// The photograph's pixels, with the object's own colours where `alpha`, of alphaOf, found edges soft;
// `seen`, of visible, is the cut-out's alpha.
Picture cutOut(const Picture& photograph, const cv::Mat& alpha, const cv::Mat& seen, Unseen unseen,
               const std::function<void()>& checkpoint);

// The pixels of an alpha that are not 0, with `margin` pixels around them, as far as there are
// any; empty when all are 0.
cv::Rect partInUse(const cv::Mat& alpha, int margin);
