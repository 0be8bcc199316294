// An editing session of the library as a host would lead it. The library has one context per
// process, so there is one session at a time.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "scribble_strokes.h"

class Session {
  public:
    // `image` is CV_8UC3, blue green red.
    explicit Session(const cv::Mat& image);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void box(const cv::Rect& box);  // the first request of a session only
    void lasso(const std::vector<cv::Point>& loop);
    void brush(const BrushStroke& stroke, bool adds);

    // The result so far: 255 object, 0 the rest.
    cv::Mat mask() const;

    // The part of the photograph that the last request decided: its working region without the
    // borders and margins that were cut off.
    cv::Rect region() const;

  private:
    void request(const cv::Mat& marked, int code, std::vector<cv::Point> points, int strokeType);

    int m_width;
    int m_height;
    std::vector<std::uint32_t> m_pixels;
    std::vector<std::uint32_t> m_blended;
    std::vector<std::uint8_t> m_mask;
};
