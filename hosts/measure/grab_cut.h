// OpenCV's grabCut as its users drive it (Rother, Kolmogorov and Blake 2004): on a reduced
// photograph, because it takes minutes on a full one, and with its colour models kept from one call
// to the next.
#pragma once

#include <opencv2/core.hpp>

#include "measure/method.h"

// What the library itself reduces a photograph to, in pixels.
constexpr int kGrabCutPixels = 76800;
// Of grabCut after each mark; the library makes up to five passes, too.
constexpr int kGrabCutIterations = 5;

// The photograph's size, or one of at most so many pixels at its proportions.
cv::Size reducedSize(cv::Size photo, int pixels);

// Inside a box or loop everything is probably object, and outside certainly background. A brush's
// pixels are certain, later ones over earlier ones, and everything else probably background until
// a mark says more. Marks are drawn at the reduced size, by the rasteriser of the sessions. A pixel
// of the mask is object where the reduced mask, interpolated between the centres of its pixels, is
// at least half object.
class GrabCut : public Method {
  public:
    // `image` is CV_8UC3, blue green red; it is reduced to `working`.
    GrabCut(const cv::Mat& image, cv::Size working, int iterations);

    void apply(const Step& mark) override;
    cv::Mat mask() const override;

  private:
    cv::Point reduced(cv::Point point) const;
    void draw(const Step& mark);
    void cut();

    cv::Size m_size;  // the photograph's
    cv::Mat m_image;  // reduced
    cv::Mat m_labels;
    cv::Mat m_background;  // its colour model
    cv::Mat m_object;
    int m_iterations;
    double m_scaleX;  // photograph to reduced
    double m_scaleY;
};
