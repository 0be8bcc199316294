// One picture of many results: a row for each photograph, a tile for each case.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

class ContactSheet {
  public:
    void startRow();
    // Adds a tile to the row: the photograph, darkened outside the mask, with the mask's outline
    // and the scribbles (CV_8UC1 of codes, may be empty).
    void add(const cv::Mat& image, const cv::Mat& mask, const cv::Mat& scribbles,
             const std::string& caption);
    // Writes an image file; throws std::runtime_error when that fails.
    void write(const std::string& file) const;

  private:
    std::vector<std::vector<cv::Mat>> m_rows;
};
