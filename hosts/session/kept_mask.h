// A mask kept for later: the lengths of its runs, since a session keeps one for every step. A mask of
// 12 megapixels takes some 50 kilobytes.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

class KeptMask {
  public:
    KeptMask() = default;
    // CV_8UC1, 255 object, 0 the rest.
    explicit KeptMask(const cv::Mat& mask);
    // The pixels of `codes` (CV_8UC1) that are `code`; all of them lie in `where`.
    KeptMask(const cv::Mat& codes, int code, cv::Rect where);

    // `size` is that of the mask that was kept.
    cv::Mat unpacked(cv::Size size) const;
    // Sets the pixels of an image (CV_8UC1 without gaps between its rows) that the mask holds.
    void writeTo(cv::Mat& image, int value) const;

  private:
    // Runs of the rest and of the object in turn, row by row across the ends of rows; a length is
    // seven bits a byte, the lowest first, with the top bit set on all bytes but the last.
    std::vector<std::uint8_t> m_runs;
};
