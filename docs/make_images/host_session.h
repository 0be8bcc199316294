// An editing session through the host calls alone. One at a time.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

struct BrushStroke {
    std::vector<cv::Point> corners;  // of its path
    int radius;
    bool adds;
};

class HostSession {
  public:
    // `photo` is BGR.
    explicit HostSession(const cv::Mat& photo);
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    // The mask after each, 255 object. Right and bottom of the box are exclusive.
    cv::Mat box(const cv::Rect& box);
    cv::Mat brush(const BrushStroke& stroke);

  private:
    cv::Mat request(std::vector<cv::Point> stroke, const cv::Mat& marks, int strokeType);

    cv::Mat m_words;
    cv::Mat m_mask;
};
